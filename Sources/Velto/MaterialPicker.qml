pragma ComponentBehavior: Bound
import QtQuick
import Velto

// One button per source material.
Row {
    id: picker

    required property PracticeModel session

    spacing: 4

    Repeater {
        model: picker.session.materialTitles

        Pressable {
            id: button

            required property int index
            required property string modelData
            readonly property bool current: picker.session.material === index

            objectName: "material" + index
            width: 54
            height: 28
            name: modelData
            onActivated: picker.session.material = index

            RoundedBox {
                objectName: "materialBox" + button.index
                anchors.fill: parent
                radius: 5
                color: button.current ? Theme.palette.selectedFill : "transparent"
                strokeColor: button.current ? Palettes.faded(Theme.palette.ink, 0.55) : "transparent"
                strokeWidth: 1.5
            }

            Label {
                objectName: "materialLabel" + button.index
                anchors.centerIn: parent
                text: button.modelData
                size: 11
                font.weight: button.current ? Font.DemiBold : Font.Normal
            }
        }
    }
}
