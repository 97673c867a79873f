import QtQuick
import Velto

// Answers with a value in dB on a linear axis.
ScaleStrip {
    name: "Decibels" // unless the drill asks for something more precise
    minorOpacity: 0.5
}
