pragma ComponentBehavior: Bound
import QtQuick
import Velto

// A bar for each band of the frequency drill, taller and redder for a larger mean error.
Column {
    id: map

    required property ProgressModel progress
    readonly property real labelTop: progress.tallestBar + 4
    readonly property real pixelRatio: Screen.devicePixelRatio

    spacing: 8

    Item {
        width: parent.width
        height: map.labelTop + 12

        Accessible.role: Accessible.Chart
        Accessible.name: Words.map
        Accessible.description: map.progress.mapDescription

        Repeater {
            id: bars

            model: map.progress.barHeights.length

            RoundedBox {
                required property int index
                readonly property real weakness: map.progress.weaknesses[index]
                readonly property real barHeight: map.progress.barHeights[index]

                objectName: "bar" + index
                x: AnswerLayout.shareLeft(index, bars.count, map.width, 2, map.pixelRatio)
                width: AnswerLayout.shareWidth(index, bars.count, map.width, 2, map.pixelRatio)
                height: map.progress.tallestBar
                insetTop: height - barHeight
                radius: 2
                continuous: true
                color: weakness < 0 ? Theme.palette.track : Palettes.weakness(Theme.palette, weakness)
                strokeColor: index === map.progress.weakestBand ? Theme.palette.ink : "transparent"
                strokeWidth: 1.5
            }
        }

        Repeater {
            id: labels

            readonly property real gap: (map.width - total) / (map.progress.bandLabels.length - 1)
            readonly property real total: {
                let sum = 0;
                for (let i = 0; i < count; ++i)
                    sum += itemAt(i)?.implicitWidth ?? 0;
                return sum;
            }

            model: map.progress.bandLabels

            Caption {
                required property int index
                required property string modelData

                objectName: "bandLabel" + index
                x: {
                    let left = index * labels.gap;
                    for (let i = 0; i < index; ++i)
                        left += labels.itemAt(i)?.implicitWidth ?? 0;
                    return left;
                }
                y: map.labelTop
                text: modelData
                mono: true
                size: 8
            }
        }
    }

    Caption {
        objectName: "weakestText"
        text: map.progress.weakestText
        color: map.progress.weakestBand < 0 ? Theme.palette.faint : Theme.palette.muted
    }
}
