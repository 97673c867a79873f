import QtQuick
import Velto

// The behaviour of a button without its looks. Mouse and assistive technology emit `activated`.
FocusStop {
    id: control

    property string name
    readonly property bool pressed: available && mouse.containsPress

    signal activated

    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.onPressAction: if (enabled && available)
        activated()

    MouseArea {
        id: mouse

        anchors.fill: parent
        onClicked: {
            if (!control.available)
                return;
            control.forceActiveFocus(Qt.MouseFocusReason);
            control.activated();
        }
    }
}
