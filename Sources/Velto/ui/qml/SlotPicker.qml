pragma ComponentBehavior: Bound
import QtQuick
import Velto

// Answers with one of the trial's slots.
Item {
    id: picker

    required property int slotCount
    property var value // the chosen slot, undefined for none
    property var truth // the flipped slot, undefined until it is known
    property bool answerable: true

    // The listener chooses a slot.
    signal picked(int value)

    readonly property real gap: 10
    readonly property real pixelRatio: Screen.devicePixelRatio

    implicitHeight: AnswerLayout.areaHeight

    Accessible.role: Accessible.Grouping
    Accessible.name: Words.answerName(PracticeModel.Polarity)

    Item {
        Repeater {
            id: buttons

            model: picker.slotCount

            Choice {
                id: slot

                readonly property bool known: picker.truth !== undefined
                readonly property bool flipped: picker.truth === index

                objectName: "slotChoice" + index
                x: AnswerLayout.shareLeft(index, picker.slotCount, picker.width, picker.gap, picker.pixelRatio)
                width: AnswerLayout.shareWidth(index, picker.slotCount, picker.width, picker.gap, picker.pixelRatio)
                height: AnswerLayout.stripHeight
                ringRadius: 8
                name: Words.slotName(index)
                choices: buttons
                chosen: picker.value ?? -1
                changeable: picker.answerable
                onPicked: index => picker.picked(index)

                Accessible.description: known ? caption.text : ""

                ChoiceBox {
                    objectName: "slotChoiceBox" + slot.index
                    anchors.fill: parent
                    radius: slot.ringRadius
                    current: slot.current
                    tint: slot.tint
                    pressed: slot.pressed
                    correct: slot.flipped
                }

                Column {
                    anchors.centerIn: parent
                    spacing: 2

                    Label {
                        id: number

                        objectName: "slotNumber" + slot.index
                        partOfName: true
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: slot.index + 1
                        mono: true
                        size: 24
                        font.weight: slot.current || slot.flipped ? Font.Bold : Font.Normal

                        RoundedBox {
                            objectName: "slotDot" + slot.index
                            visible: slot.known && slot.current
                            anchors.left: parent.right
                            anchors.leftMargin: 8
                            anchors.verticalCenter: parent.verticalCenter
                            width: 5
                            height: 5
                            dot: true
                            color: Theme.palette.ink
                        }
                    }

                    Label {
                        id: caption

                        objectName: "slotCaption" + slot.index
                        partOfName: true
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: Words.slotCaption(slot.index, picker.truth ?? -1)
                        mono: true
                        size: 9
                        font.weight: Font.Medium
                        color: slot.flipped ? Theme.palette.good : slot.tint > 0 ? Theme.palette.ink : Theme.palette.muted
                    }
                }
            }
        }
    }
}
