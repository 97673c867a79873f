import QtQuick
import Velto

// The current trial: prompt, difficulty, picker, transport and verdict.
Item {
    id: card

    required property PracticeModel session
    property bool reducedMotion: false
    // Room for the widest row of any drill.
    readonly property real minimumWidth: 40 + Math.max(widestPrompt + 20 + pill.implicitWidth, transport.minimumWidth)
    readonly property real widestPrompt: metrics.widestOf(session.prompts)

    implicitHeight: rows.implicitHeight + 40

    RoundedBox {
        objectName: "card"
        anchors.fill: parent
        radius: 12
        continuous: true
        color: Theme.palette.surface
        strokeColor: Theme.palette.line
        strokeWidth: 1
    }

    TextMeasure {
        id: metrics

        font: prompt.font
    }

    Column {
        id: rows

        x: 20
        y: 20
        width: parent.width - 40
        spacing: 18

        Item {
            width: parent.width
            implicitHeight: 20

            Label {
                id: prompt

                objectName: "prompt"
                height: parent.height
                text: card.session.prompt
                size: 15
            }

            DifficultyPill {
                id: pill

                objectName: "difficultyPill"
                anchors.right: parent.right
                height: parent.height
                difficulty: card.session.difficulty
            }
        }

        AnswerArea {
            objectName: "answerArea"
            width: parent.width
            session: card.session
            reducedMotion: card.reducedMotion
        }

        Transport {
            id: transport

            width: parent.width
            session: card.session
        }

        Verdict {
            width: parent.width
            session: card.session
        }
    }
}
