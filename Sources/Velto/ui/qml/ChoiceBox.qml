import QtQuick
import Velto

// The box of a choice, highlighted while it is chosen or shown as the correct one.
RoundedBox {
    property bool current: false
    property bool correct: false
    property bool available: true
    property bool framed: true // visible even without a highlight
    property real tint: 0 // the text colour's share of the fill
    property bool pressed: false
    readonly property bool marked: current || correct
    // Takes part in the tint of a press, which would else make the fill brighter than an opaque frame.
    // A translucent frame, of the text's colour, does not change.
    readonly property color frame: pressed ? Palettes.faded(Palettes.mixed(Theme.palette.line, Theme.palette.ink, tint), Theme.palette.line.a) : Theme.palette.line
    readonly property color fill: marked ? (available ? Theme.palette.selectedFill : Theme.palette.soft) : framed ? Theme.palette.surface : "transparent"

    color: tint > 0 ? Palettes.laidOver(Palettes.faded(Theme.palette.ink, tint), fill) : fill
    strokeColor: correct ? Theme.palette.good : current ? (available ? Palettes.faded(Theme.palette.ink, 0.55) : Theme.palette.line) : framed ? frame : "transparent"
    strokeWidth: marked || !framed ? 1.5 : 1
}
