import QtQuick
import Velto

// One line of text in the desktop's font, in its monospaced one, or in the wordmark's face.
Text {
    property bool mono: false
    property bool brand: false
    property real size: 12 // points
    property real tracking: 0 // points
    property bool partOfName: false // part of its control's name; screen readers skip it here

    color: Theme.palette.ink
    font.family: mono ? Fonts.mono : brand && Fonts.brandRegistered ? Fonts.brand : Fonts.system
    font.weight: brand && !Fonts.brandRegistered ? Font.DemiBold : Font.Normal
    font.pixelSize: size
    font.letterSpacing: tracking
    textFormat: Text.PlainText
    verticalAlignment: Text.AlignVCenter

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: partOfName || text === ""
}
