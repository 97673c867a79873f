import QtQuick
import Velto

// The box of a choice, highlighted while it is chosen or shown as the correct one.
RoundedBox {
    property bool current: false
    property bool correct: false
    property bool framed: true // visible even without a highlight
    readonly property bool marked: current || correct

    color: marked ? Theme.palette.selectedFill : framed ? Theme.palette.surface : "transparent"
    strokeColor: correct ? Theme.palette.good : current ? Palettes.faded(Theme.palette.ink, 0.55) : framed ? Theme.palette.line : "transparent"
    strokeWidth: marked || !framed ? 1.5 : 1
}
