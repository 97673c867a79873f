pragma ComponentBehavior: Bound
import QtQuick
import Velto

// The current trial: prompt, difficulty, picker, transport and verdict.
Item {
    id: card

    required property PracticeModel session
    property bool reducedMotion: false
    property bool opened: false

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

    Column {
        id: rows

        x: 20
        y: 20
        width: parent.width - 40
        spacing: 18

        // As high as for the longest prompt, so that a change of the drill moves nothing.
        Item {
            id: promptRow

            readonly property real promptWidth: width - 20 - pill.width

            width: parent.width
            implicitHeight: {
                let highest = 20;
                for (let i = 0; i < prompts.count; ++i)
                    highest = Math.max(highest, Math.ceil(prompts.itemAt(i)?.implicitHeight ?? 0));
                return highest;
            }

            Repeater {
                id: prompts

                model: card.session.prompts

                Label {
                    required property string modelData

                    visible: false
                    width: promptRow.promptWidth
                    wrapMode: Text.WordWrap
                    text: modelData
                    size: 15
                }
            }

            Label {
                objectName: "prompt"
                width: promptRow.promptWidth
                height: parent.height
                wrapMode: Text.WordWrap
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
            opened: card.opened
        }

        Transport {
            id: transport

            width: parent.width
            session: card.session
        }

        Verdict {
            width: parent.width
            opened: card.opened
            session: card.session
        }
    }
}
