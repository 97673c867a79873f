import QtQuick
import Velto

// Answers with a value in dB on a linear axis. Its name is what the drill asks for.
ScaleStrip {
    minorOpacity: 0.5
}
