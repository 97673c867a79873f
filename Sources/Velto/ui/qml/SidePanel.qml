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
                label: "STREAK"
                value: panel.progress.streak
                spoken: panel.progress.spokenStreak
            }

            Stat {
                objectName: "stat" + label
                width: figures.share
                label: "TODAY"
                value: panel.progress.today
                spoken: panel.progress.spokenToday
            }

            Stat {
                objectName: "stat" + label
                width: figures.share
                label: "ACC"
                value: panel.progress.accuracy
                spoken: panel.progress.spokenAccuracy
            }
        }

        Caption {
            objectName: "mapTitle"
            text: "weakness map"
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
        text: "1/2/3 pick · space switch · ↩ submit"
        mono: true
        size: 10
    }
}
