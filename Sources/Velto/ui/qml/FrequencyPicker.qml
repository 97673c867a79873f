import QtQuick
import Velto

// Answers with a band of the third-octave grid on a logarithmic axis.
ScaleStrip {
    name: Words.answerName(PracticeModel.Frequency)
    minorOpacity: 0.55
    scaleModel: Scales.frequency
}
