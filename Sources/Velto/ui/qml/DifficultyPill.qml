import QtQuick
import Velto

// The trial's difficulty as a bar and a number.
Row {
    id: pill

    property real difficulty: 0 // 0 to 100

    spacing: 8

    Accessible.role: Accessible.StaticText
    Accessible.name: Words.spokenDifficulty(value.text)

    Label {
        objectName: "difficultyCaption"
        partOfName: true
        anchors.verticalCenter: parent.verticalCenter
        text: Words.difficulty
        size: 9
        font.weight: Font.Medium
        tracking: 1.2
        color: Theme.palette.faint
    }

    RoundedBox {
        objectName: "difficultyTrack"
        anchors.verticalCenter: parent.verticalCenter
        width: 90
        height: 6
        radius: 3
        color: Theme.palette.track

        RoundedBox {
            objectName: "difficultyBar"
            width: parent.width * Math.min(Math.max(pill.difficulty / 100, 0), 1)
            height: parent.height
            radius: 3
            color: Theme.palette.ink
        }
    }

    Label {
        id: value

        objectName: "difficultyValue"
        partOfName: true
        anchors.verticalCenter: parent.verticalCenter
        width: 24
        horizontalAlignment: Text.AlignRight
        text: Format.fixed(pill.difficulty, 0)
        size: 12
        font.weight: Font.DemiBold
    }
}
