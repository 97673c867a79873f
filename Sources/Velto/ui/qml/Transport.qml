pragma ComponentBehavior: Bound
import QtQuick
import Velto

// Slot buttons, materials and the primary button.
Item {
    id: transport

    required property PracticeModel session
    // Room for three slot buttons, the maximum.
    readonly property real minimumWidth: slotRow.widthFor(3) + left.spacing + hint.implicitWidth + 20 + right.implicitWidth

    implicitHeight: 36

    Row {
        id: left

        height: parent.height
        spacing: 12

        Row {
            id: slotRow

            readonly property real slotWidth: 52

            function widthFor(count: int): real {
                return count * slotWidth + (count - 1) * spacing;
            }

            spacing: 8

            Accessible.role: Accessible.Grouping
            Accessible.name: "Version"

            Repeater {
                id: slotButtons

                model: transport.session.slotTitles

                Choice {
                    id: slot

                    required property string modelData

                    objectName: "slot" + index
                    width: slotRow.slotWidth
                    height: 36
                    ringRadius: 7
                    name: "Play " + modelData
                    choices: slotButtons
                    chosen: transport.session.currentSlot
                    onPicked: index => transport.session.select(index)

                    ChoiceBox {
                        objectName: "slotBox" + slot.index
                        anchors.fill: parent
                        radius: slot.ringRadius
                        current: slot.current
                    }

                    Label {
                        objectName: "slotLabel" + slot.index
                        partOfName: true
                        anchors.centerIn: parent
                        text: slot.modelData
                        size: 15
                        font.weight: slot.current ? Font.Bold : Font.Normal
                    }
                }
            }
        }

        Label {
            id: hint

            objectName: "switchHint"
            anchors.verticalCenter: parent.verticalCenter
            text: "space = switch"
            mono: true
            size: 10
            color: Theme.palette.faint
        }
    }

    Row {
        id: right

        anchors.right: parent.right
        height: parent.height
        spacing: 16

        MaterialPicker {
            anchors.verticalCenter: parent.verticalCenter
            session: transport.session
        }

        PrimaryButton {
            id: primary

            objectName: "primaryButton"
            texts: ["Submit", "Next"]
            text: transport.session.graded ? "Next" : "Submit"
            available: transport.session.graded || transport.session.canSubmit
            onActivated: transport.session.advance()
        }
    }

    Shortcut {
        sequence: "Return"
        autoRepeat: false
        enabled: primary.available
        onActivated: primary.activated()
    }
}
