import QtQuick
import Velto

// The box of a choice, highlighted while it is chosen or shown as the correct one.
RoundedBox {
    property bool current: false
    property bool correct: false
    property bool available: true
    property bool framed: true // visible even without a highlight
    property real tint: 0 // the text colour's share of the fill
    readonly property bool marked: current || correct
    readonly property color fill: marked ? (available ? Theme.palette.selectedFill : Theme.palette.soft) : framed ? Theme.palette.surface : "transparent"

    color: tint > 0 ? Palettes.laidOver(Palettes.faded(Theme.palette.ink, tint), fill) : fill
    strokeColor: correct ? Theme.palette.good : current ? (available ? Palettes.faded(Theme.palette.ink, 0.55) : Theme.palette.line) : framed ? Theme.palette.line : "transparent"
    strokeWidth: marked || !framed ? 1.5 : 1
}
