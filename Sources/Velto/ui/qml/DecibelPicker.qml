import QtQuick
import Velto

// Answers with a value in dB on a linear axis.
ScaleStrip {
    id: picker

    property real lower: 0 // dB
    property real upper: 7 // dB
    property real step: 0.05 // dB

    name: "Decibels"
    minorOpacity: 0.5
    scaleModel: DecibelScaleModel {
        lower: picker.lower
        upper: picker.upper
        step: picker.step
    }
}
