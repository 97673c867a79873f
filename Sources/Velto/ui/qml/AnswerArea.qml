pragma ComponentBehavior: Bound
import QtQuick
import Velto

// The picker of the current drill, bound to the session's answer.
Item {
    id: area

    required property PracticeModel session
    property bool reducedMotion: false
    property bool opened: false // the first frame is on the screen

    implicitHeight: AnswerLayout.areaHeight

    // Keeps drags on the pickers and between the slots from moving the window.
    MouseArea {
        width: parent.width
        height: AnswerLayout.stripHeight
    }

    Postponed {
        shown: area.session.drill === PracticeModel.Frequency
        opened: area.opened

        FrequencyPicker {
            objectName: "frequencyPicker"
            anchors.fill: parent
            visible: area.session.drill === PracticeModel.Frequency
            enabled: visible
            answerable: area.session.answerable
            value: visible && area.session.answer > 0 ? area.session.answer : undefined
            truth: visible && area.session.graded && area.session.truth > 0 ? area.session.truth : undefined
            onPicked: value => area.session.answer = value
        }
    }

    Postponed {
        shown: area.session.drill === PracticeModel.Level || area.session.drill === PracticeModel.Dynamics
        opened: area.opened

        DecibelPicker {
            readonly property bool isLevel: area.session.drill === PracticeModel.Level

            objectName: "decibelPicker"
            anchors.fill: parent
            visible: isLevel || area.session.drill === PracticeModel.Dynamics
            enabled: visible
            answerable: area.session.answerable
            name: Words.answerName(isLevel ? PracticeModel.Level : PracticeModel.Dynamics)
            scaleModel: isLevel ? Scales.level : Scales.dynamics
            value: visible ? area.session.answer : undefined
            truth: visible && area.session.graded && area.session.truth > 0 ? area.session.truth : undefined
            onPicked: value => area.session.answer = value
        }
    }

    Postponed {
        shown: area.session.drill === PracticeModel.Polarity
        opened: area.opened

        SlotPicker {
            objectName: "slotPicker"
            anchors.fill: parent
            visible: area.session.drill === PracticeModel.Polarity
            enabled: visible
            answerable: area.session.answerable
            slotCount: area.session.slotTitles.length
            value: visible && area.session.answer >= 0 ? Math.trunc(area.session.answer) : undefined
            truth: visible && area.session.graded ? area.session.truth : undefined
            onPicked: value => area.session.answer = value
        }
    }

    // Fades the area to 40 % during rendering. If the items themselves were faded, ticks would show
    // through the marker.
    Rectangle {
        objectName: "veil"
        x: -16
        width: parent.width + 32
        height: parent.height + 6
        color: Theme.palette.surface
        opacity: area.session.rendering ? 1 - 0.4 : 0

        Behavior on opacity  {
            enabled: !area.reducedMotion

            NumberAnimation {
                duration: 150
                easing.type: Easing.OutCubic
            }
        }
    }
}
