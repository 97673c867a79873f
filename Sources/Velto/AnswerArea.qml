import QtQuick
import Velto

// The picker of the current drill, bound to the session's answer.
Item {
    id: area

    required property PracticeModel session
    // The outermost labels reach beyond the scales' ends.
    readonly property real overhang: 16

    implicitHeight: 88

    // The pickers belong to no drag of the background, not even while they are disabled.
    MouseArea {
        width: parent.width
        height: 76
    }

    Item {
        objectName: "answerArea"
        x: -area.overhang
        width: area.width + 2 * area.overhang
        height: area.height
        opacity: area.session.rendering ? 0.4 : 1
        // Faded as one picture: what lies under a marker does not shine through it.
        layer.enabled: opacity < 1

        Behavior on opacity {
            NumberAnimation {
                duration: 150
                easing.type: Easing.OutCubic
            }
        }

        FrequencyPicker {
            objectName: "frequencyPicker"
            x: area.overhang
            width: area.width
            visible: area.session.drill === PracticeModel.Frequency
            enabled: visible && !area.session.graded
            lo: 40
            hi: 16000
            value: area.session.answer > 0 ? area.session.answer : undefined
            truth: area.session.graded && area.session.truth > 0 ? area.session.truth : undefined
            onPicked: value => area.session.answer = value
        }

        DecibelPicker {
            readonly property bool isLevel: area.session.drill === PracticeModel.Level

            objectName: "decibelPicker"
            x: area.overhang
            width: area.width
            visible: isLevel || area.session.drill === PracticeModel.Dynamics
            enabled: visible && !area.session.graded
            lower: 0
            upper: isLevel ? 7 : 14
            step: isLevel ? 0.05 : 0.5
            value: area.session.answer
            truth: area.session.graded && area.session.truth > 0 ? area.session.truth : undefined
            onPicked: value => area.session.answer = value
        }

        SlotPicker {
            objectName: "slotPicker"
            x: area.overhang
            width: area.width
            visible: area.session.drill === PracticeModel.Polarity
            enabled: visible && !area.session.graded
            slotCount: area.session.slotTitles.length
            value: area.session.answer >= 0 ? Math.trunc(area.session.answer) : undefined
            truth: area.session.graded ? area.session.truth : undefined
            onPicked: value => area.session.answer = value
        }
    }
}
