import QtQuick
import Velto

// The button that submits the answer and starts the next trial.
Pressable {
    id: control

    property alias text: label.text
    // All texts that the button may show. The widest sets its width.
    property var texts: [text]

    implicitWidth: metrics.widestOf(texts) + 40
    implicitHeight: 36
    ringRadius: 7
    isButton: true
    // So that a double click does not skip the verdict.
    ignoresDoubleClicks: true
    activeFocusOnTab: available || activeFocus
    name: text

    Accessible.role: Accessible.Button
    Accessible.name: name

    RoundedBox {
        objectName: "primaryButtonBox"
        anchors.fill: parent
        radius: 7
        continuous: true
        color: !control.available ? Theme.palette.soft : control.pressed ? Palettes.faded(Theme.palette.ink, 0.7) : control.hovered ? Palettes.faded(Theme.palette.ink, 0.85) : Theme.palette.ink
        strokeColor: control.available ? "transparent" : Theme.palette.line
        strokeWidth: 1
    }

    Label {
        id: label

        objectName: "primaryButtonLabel"
        partOfName: true
        anchors.centerIn: parent
        size: 13
        font.weight: Font.DemiBold
        color: control.available ? Theme.palette.bg : Theme.palette.muted
    }

    TextMeasure {
        id: metrics

        font: label.font
    }
}
