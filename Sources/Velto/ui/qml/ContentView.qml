import QtQuick
import Velto

// The practice window's content: the main column, a divider and the side panel.
Item {
    id: root

    required property PracticeModel session
    required property ProgressModel progress
    required property bool dark
    property bool reducedMotion: false
    property bool opened: false // the first frame is on the screen
    readonly property real minimumWidth: main.minimumWidth + divider.width + side.width
    readonly property real minimumHeight: main.minimumHeight

    // The listener drags the background.
    signal moveRequested

    Theme.palette: dark ? Palettes.dark : Palettes.light

    // At fractional scales the window may end within a device pixel, of which the software renderer
    // would paint the covered part only. No larger than needed: a change of what lies below ticks and
    // markers repaints what is below them, but not always all of their own pixels.
    Rectangle {
        objectName: "bottomEdge"
        y: parent.height - 1
        width: parent.width + 1
        height: 2
        color: Theme.palette.bg
    }

    Rectangle {
        objectName: "rightEdge"
        x: parent.width - 1
        width: 2
        height: parent.height + 1
        color: Theme.palette.bg
    }

    BackgroundDrag {
        anchors.fill: parent
        onDragged: root.moveRequested()
    }

    Item {
        id: main

        readonly property real minimumWidth: 640
        readonly property real minimumHeight: column.implicitHeight + 40

        width: Math.max(minimumWidth, parent.width - divider.width - side.width)
        height: parent.height

        Column {
            id: column

            x: 20
            y: 20
            width: parent.width - 40
            spacing: 16

            Header {
                objectName: "header"
                width: parent.width
                session: root.session
            }

            TrialCard {
                width: parent.width
                session: root.session
                reducedMotion: root.reducedMotion
                opened: root.opened
            }
        }
    }

    Rectangle {
        id: divider

        objectName: "divider"
        x: main.width
        width: 1
        height: parent.height + 1
        color: Theme.palette.line
    }

    Item {
        id: side

        objectName: "sideColumn"
        anchors.left: divider.right
        width: 320 + 40
        height: parent.height

        SidePanel {
            objectName: "sidePanel"
            anchors.fill: parent
            anchors.margins: 20
            progress: root.progress
        }
    }

    FocusRing {
        objectName: "focusRing"
        color: Theme.palette.ink
    }
}
