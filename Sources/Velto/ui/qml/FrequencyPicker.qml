import QtQuick
import Velto

// Answers with a band of the third-octave grid on a logarithmic axis.
ScaleStrip {
    id: picker

    property real lo: 40 // Hz
    property real hi: 16000 // Hz

    name: "Frequency"
    minorOpacity: 0.55
    scaleModel: FrequencyScaleModel {
        lo: picker.lo
        hi: picker.hi
    }
}
