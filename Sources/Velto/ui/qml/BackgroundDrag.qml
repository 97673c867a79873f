import QtQuick

// Tells, once a press, that the pointer drags what no other item takes.
MouseArea {
    id: area

    property point start
    property bool told: false

    signal dragged

    onPressed: mouse => {
        start = Qt.point(mouse.x, mouse.y);
        told = false;
    }
    onPositionChanged: mouse => {
        const distance = Math.hypot(mouse.x - start.x, mouse.y - start.y);
        // Moving the window from the press on would leave the window manager with it after a click.
        if (told || distance < Qt.styleHints.startDragDistance)
            return;
        told = true;
        dragged();
    }
}
