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
            spacing: 10

            Repeater {
                model: [{
                        "label": "STREAK",
                        "value": panel.progress.streak
                    }, {
                        "label": "TODAY",
                        "value": panel.progress.today
                    }, {
                        "label": "ACC",
                        "value": panel.progress.accuracy
                    }]

                Stat {
                    required property var modelData

                    objectName: "stat" + modelData.label
                    width: (panel.width - 20) / 3
                    label: modelData.label
                    value: modelData.value
                }
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
