import QtQuick
import Velto

// One of a group of exclusive choices. The group is a single tab stop; arrow keys, Home and End
// change the choice, and the focus follows it. A choice that is not available is no tab stop.
Pressable {
    id: choice

    required property int index
    required property Repeater choices // the group
    property int chosen: -1 // index in the group, -1 for none
    property bool changeable: true
    readonly property bool current: index === chosen
    readonly property bool checked: current
    // The part of the text's colour that the pointer adds to the fill.
    readonly property real tint: !changeable ? 0 : pressed ? 0.12 : hovered ? 0.05 : 0

    // The listener picks `index`, which may already be chosen.
    signal picked(int index)

    function pick(which: int) {
        if (changeable && available)
            picked(which);
    }

    function stopOf(which: int): int {
        return Math.max(which, 0);
    }

    activeFocusOnTab: available && index === stopOf(chosen)
    onActivated: pick(index)
    onMoved: move => {
        const next = movedChoice(chosen, choices.count, move);
        if (next !== chosen)
            pick(next);
    }
    onChosenChanged: if (activeFocus && index !== stopOf(chosen))
        choices.itemAt(stopOf(chosen))?.forceActiveFocus(Qt.OtherFocusReason)

    Accessible.role: Accessible.RadioButton
    Accessible.name: name
    Accessible.checkable: true
    Accessible.checked: current
    Accessible.readOnly: !changeable
    Accessible.onPressAction: press()
    Accessible.onToggleAction: press()
}
