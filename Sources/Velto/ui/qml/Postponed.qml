import QtQuick

// Makes its delegate when that is first shown, or else after the window's first frame.
Repeater {
    id: postponed

    required property bool shown
    required property bool opened // the first frame is on the screen
    property bool wasShown: false

    model: shown || wasShown || opened ? 1 : 0
    onShownChanged: if (shown)
        wasShown = true
}
