pragma ComponentBehavior: Bound
import QtQuick
import Velto

// Answers with one of the trial's slots.
Item {
    id: picker

    property int slotCount: 3
    property var value // the chosen slot, undefined for none
    property var truth // the flipped slot, undefined until it is known

    // The listener chooses a slot.
    signal picked(int value)

    readonly property real gap: 10

    implicitHeight: 88

    // Where slot `index` starts: an equal share of the width each, to a whole point.
    function leftOf(index: int): real {
        return Math.round(index * (width + gap) / slotCount);
    }

    Item {
        Repeater {
            model: picker.slotCount

            Pressable {
                id: slot

                required property int index
                readonly property bool known: picker.truth !== undefined
                readonly property bool chosen: picker.value === index
                readonly property bool flipped: picker.truth === index

                objectName: "slotChoice" + index
                x: picker.leftOf(index)
                width: picker.leftOf(index + 1) - picker.gap - x
                height: 76
                name: "Slot " + (index + 1)
                onActivated: picker.picked(index)

                RoundedBox {
                    objectName: "slotChoiceBox" + slot.index
                    anchors.fill: parent
                    radius: 8
                    color: slot.chosen || slot.flipped ? Theme.palette.selectedFill : Theme.palette.surface
                    strokeColor: slot.flipped ? Theme.palette.good : slot.chosen ? Palettes.faded(Theme.palette.ink, 0.55) : Theme.palette.line
                    strokeWidth: slot.flipped || slot.chosen ? 1.5 : 1
                }

                Column {
                    anchors.centerIn: parent
                    spacing: 2

                    Label {
                        id: number

                        objectName: "slotNumber" + slot.index
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: slot.index + 1
                        mono: true
                        size: 24
                        font.weight: slot.chosen || slot.flipped ? Font.Bold : Font.Normal

                        RoundedBox {
                            objectName: "slotDot" + slot.index
                            visible: slot.known && slot.chosen
                            anchors.left: parent.right
                            anchors.leftMargin: 8
                            anchors.verticalCenter: parent.verticalCenter
                            width: 5
                            height: 5
                            radius: 2.5
                            color: Theme.palette.ink
                        }
                    }

                    Label {
                        objectName: "slotCaption" + slot.index
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: !slot.known ? "?" : slot.flipped ? "FLIPPED" : "in phase"
                        mono: true
                        size: 9
                        font.weight: Font.Medium
                        color: slot.flipped ? Theme.palette.good : Theme.palette.muted
                    }
                }
            }
        }
    }
}
