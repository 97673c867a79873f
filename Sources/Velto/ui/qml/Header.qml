import QtQuick
import Velto

// The wordmark and the drill selector.
Item {
    id: header

    required property PracticeModel session
    readonly property real minimumWidth: Math.max(wordmark.implicitWidth, subtitle.implicitWidth) + 20 + selector.implicitWidth

    implicitHeight: 40

    Label {
        id: wordmark

        objectName: "wordmark"
        text: "MORLA Velto"
        size: 22
        brand: true
    }

    Label {
        id: subtitle

        objectName: "subtitle"
        anchors.bottom: parent.bottom
        text: "VELTO GYM · FREQUENCY · LEVEL · DYNAMICS · POLARITY"
        size: 9
        font.weight: Font.Medium
        tracking: 1.1
        color: Theme.palette.identity
    }

    DrillSelector {
        id: selector

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        session: header.session
    }
}
