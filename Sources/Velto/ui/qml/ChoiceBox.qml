import QtQuick
import Velto

// The box of a choice: filled and outlined while it holds, or is shown as the right one.
RoundedBox {
    property bool current: false
    property bool correct: false
    property bool framed: true // else there is no box while neither is so
    readonly property bool marked: current || correct

    color: marked ? Theme.palette.selectedFill : framed ? Theme.palette.surface : "transparent"
    strokeColor: correct ? Theme.palette.good : current ? Palettes.faded(Theme.palette.ink, 0.55) : framed ? Theme.palette.line : "transparent"
    strokeWidth: marked || !framed ? 1.5 : 1
}
