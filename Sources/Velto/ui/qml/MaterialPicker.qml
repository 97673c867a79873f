pragma ComponentBehavior: Bound
import QtQuick
import Velto

// One button per source material.
Row {
    id: picker

    required property PracticeModel session

    spacing: 4

    Accessible.role: Accessible.Grouping
    Accessible.name: Words.materials

    Repeater {
        id: buttons

        model: picker.session.materialTitles

        Choice {
            id: button

            required property string modelData

            objectName: "material" + index
            width: 54
            height: 28
            ringRadius: 5
            name: modelData
            available: picker.session.isFree
            choices: buttons
            chosen: picker.session.material
            onPicked: index => picker.session.material = index

            ChoiceBox {
                objectName: "materialBox" + button.index
                anchors.fill: parent
                radius: button.ringRadius
                current: button.current
                available: button.available
                tint: button.tint
                framed: false
            }

            Label {
                objectName: "materialLabel" + button.index
                partOfName: true
                anchors.centerIn: parent
                text: button.modelData
                size: 11
                font.weight: button.current ? Font.DemiBold : Font.Normal
                color: button.available ? Theme.palette.ink : button.current ? Theme.palette.muted : Theme.palette.faint
            }
        }
    }
}
