import QtQuick
import Velto

// The wordmark and the drill selector. The subtitle wraps where there is no room for one line.
Item {
    id: header

    required property PracticeModel session

    implicitHeight: Math.max(40, Math.ceil(wordmark.implicitHeight + subtitle.implicitHeight))

    Label {
        id: wordmark

        objectName: "wordmark"
        text: Words.wordmark
        size: 22
        brand: true
    }

    Label {
        id: subtitle

        objectName: "subtitle"
        anchors.bottom: parent.bottom
        width: Math.min(implicitWidth, parent.width - 20 - selector.width)
        wrapMode: Text.WordWrap
        text: Words.subtitle
        size: 9
        font.weight: Font.Medium
        tracking: 1.1
        color: Theme.palette.identity

        Accessible.name: text.replace(/\u00a0/g, " ")
    }

    DrillSelector {
        id: selector

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        session: header.session
    }
}
