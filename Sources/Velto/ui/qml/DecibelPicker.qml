import QtQuick
import Velto

// Answers with a value in dB on a linear axis.
ScaleStrip {
    minorOpacity: 0.5
}
