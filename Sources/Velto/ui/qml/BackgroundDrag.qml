import QtQuick

// Reports drags that no other item accepts, once per press.
MouseArea {
    id: area

    property point start
    property bool reported: false

    signal dragged

    onPressed: mouse => {
        start = Qt.point(mouse.x, mouse.y);
        reported = false;
    }
    onPositionChanged: mouse => {
        const distance = Math.hypot(mouse.x - start.x, mouse.y - start.y);
        // Wait for a drag: a move started by the press alone would continue after a mere click.
        if (reported || distance < Qt.styleHints.startDragDistance)
            return;
        reported = true;
        dragged();
    }
}
