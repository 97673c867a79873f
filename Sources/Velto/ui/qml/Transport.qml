pragma ComponentBehavior: Bound
import QtQuick
import Velto

// Slot buttons, materials and the primary button.
Item {
    id: transport

    required property PracticeModel session

    implicitHeight: 36

    Row {
        height: parent.height
        spacing: 12

        Row {
            spacing: 8

            Accessible.role: Accessible.Grouping
            Accessible.name: Words.versions

            Repeater {
                id: slotButtons

                model: transport.session.slotTitles

                Choice {
                    id: slot

                    required property string modelData

                    objectName: "slot" + index
                    width: 52
                    height: 36
                    ringRadius: 7
                    name: Words.playName(modelData)
                    choices: slotButtons
                    chosen: transport.session.currentSlot
                    onPicked: index => transport.session.select(index)

                    ChoiceBox {
                        objectName: "slotBox" + slot.index
                        anchors.fill: parent
                        radius: slot.ringRadius
                        current: slot.current
                        tint: slot.tint
                        pressed: slot.pressed
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
            objectName: "switchHint"
            anchors.verticalCenter: parent.verticalCenter
            text: Words.switchHint
            mono: true
            size: 10
            color: Theme.palette.faint
        }
    }

    Row {
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
            texts: Words.primaryTexts(!transport.session.isFree)
            text: transport.session.primary
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
