import QtQuick
import Velto

// One line of text in the desktop's font, or in its monospaced one.
Text {
    property bool mono: false
    property real size: 12 // points
    property real tracking: 0 // points
    property bool partOfName: false // of the control that it stands in, which tells it

    color: Theme.palette.ink
    font.family: mono ? Fonts.mono : Fonts.system
    font.pixelSize: size
    font.letterSpacing: tracking
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: partOfName || text === ""
}
