import QtQuick
import Velto

// A bordered box with an optional title.
Item {
    id: panel

    property string title
    default property alias content: holder.data

    implicitWidth: stack.implicitWidth + 28
    implicitHeight: stack.implicitHeight + 28

    RoundedBox {
        objectName: "panelBox"
        anchors.fill: parent
        radius: 10
        continuous: true
        color: Theme.palette.surface
        strokeColor: Theme.palette.line
        strokeWidth: 1
    }

    Column {
        id: stack

        x: 14
        y: 14
        width: panel.width - 28
        spacing: 10

        Label {
            objectName: "panelTitle"
            visible: panel.title !== ""
            text: panel.title.toUpperCase()
            mono: true
            size: 10
            font.weight: Font.Medium
            tracking: 1.4
            color: Theme.palette.faint
        }

        Item {
            id: holder

            width: stack.width
            implicitWidth: childrenRect.width
            implicitHeight: childrenRect.height
        }
    }
}
