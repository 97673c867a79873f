pragma ComponentBehavior: Bound
import QtQuick
import Velto

// The listener's progress: figures, weakness map, curve, and the keys.
Item {
    id: panel

    required property ProgressModel progress

    Column {
        width: parent.width
        spacing: 8

        Row {
            id: figures

            width: parent.width
            spacing: 10

            readonly property real share: (width - 2 * spacing) / 3

            Stat {
                objectName: "stat" + label
                width: figures.share
                label: Words.streak
                value: panel.progress.streak
                spoken: panel.progress.spokenStreak
            }

            Stat {
                objectName: "stat" + label
                width: figures.share
                label: Words.today
                value: panel.progress.today
                spoken: panel.progress.spokenToday
            }

            Stat {
                objectName: "stat" + label
                width: figures.share
                label: Words.accuracy
                value: panel.progress.accuracy
                spoken: panel.progress.spokenAccuracy
            }
        }

        Caption {
            objectName: "mapTitle"
            text: Words.mapTitle
        }

        WeaknessMap {
            width: parent.width
            progress: panel.progress
        }

        Caption {
            objectName: "curveTitle"
            text: panel.progress.curveTitle
        }

        Sparkline {
            objectName: "sparkline"
            width: parent.width
            difficulties: panel.progress.curve
            title: panel.progress.curveTitle
            description: panel.progress.curveDescription
        }
    }

    Caption {
        objectName: "keyHint"
        anchors.bottom: parent.bottom
        text: Words.keyHint
        mono: true
        size: 10
    }
}
