import QtQuick
import Velto

// One of several choices of which at most one holds. Together they are one stop of the Tab key;
// arrows, Home and End choose among them, and the focus follows what is chosen.
Pressable {
    id: choice

    required property int index
    required property Repeater choices // this one and the others
    property int chosen: -1 // which of them holds, -1 for none
    property bool changeable: true
    readonly property bool current: index === chosen
    readonly property bool checked: current

    // The listener chooses one; it may hold already.
    signal picked(int index)

    function pick(which: int) {
        if (changeable)
            picked(which);
    }

    function stopOf(which: int): int {
        return Math.max(which, 0);
    }

    activeFocusOnTab: index === stopOf(chosen)
    onActivated: pick(index)
    onMoved: move => {
        const next = movedChoice(chosen, choices.count, move);
        if (next !== chosen)
            pick(next);
    }
    onChosenChanged: if (activeFocus && index !== stopOf(chosen))
        choices.itemAt(stopOf(chosen))?.forceActiveFocus(Qt.OtherFocusReason)

    Accessible.role: Accessible.RadioButton
    Accessible.checkable: true
    Accessible.checked: current
    Accessible.readOnly: !changeable
    Accessible.onToggleAction: if (enabled)
        activated()
}
