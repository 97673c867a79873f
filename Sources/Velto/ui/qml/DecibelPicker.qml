import QtQuick
import Velto

// Answers with a value in dB on a linear axis.
ScaleStrip {
    name: "Decibels"
    minorOpacity: 0.5
}
