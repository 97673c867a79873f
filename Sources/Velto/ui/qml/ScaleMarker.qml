import QtQuick
import Velto

// A marker on a scale: a bar as high as the strip and a chip with the value. Its `x` is the value's
// position.
Item {
    id: marker

    property string text
    property bool isTruth: false
    property bool dimmed: false
    property veltoChipPlace chipPlace // on the strip
    required property real barLeft // the bar's left edge on the strip
    required property real barWidth
    readonly property real chipWidth: Math.ceil(chipContent.implicitWidth) + 14
    readonly property color color: isTruth ? Theme.palette.ink : dimmed ? Palettes.faded(Theme.palette.signal, 0.45) : Theme.palette.signal

    z: chipPlace.crosses ? 1 : 0 // above the other marker's bar

    Rectangle {
        objectName: marker.objectName + "Bar"
        x: marker.barLeft - marker.x
        // Qt would round a fractional width up to whole points.
        width: 1
        transform: Scale {
            xScale: marker.barWidth
        }
        height: AnswerLayout.stripHeight
        // Opaque: a tick under the bar does not show through.
        color: marker.isTruth || !marker.dimmed ? marker.color : Palettes.mixed(Theme.palette.soft, Theme.palette.signal, 0.45)
    }

    RoundedBox {
        objectName: marker.objectName + "Chip"
        x: marker.chipPlace.x - marker.x
        y: marker.chipPlace.y
        width: marker.chipWidth
        height: AnswerLayout.chipHeight
        radius: 5
        color: marker.chipPlace.crosses ? Theme.palette.soft : "transparent"
        strokeColor: Palettes.faded(marker.color, 0.35)
        strokeWidth: 1

        Row {
            id: chipContent

            x: 7
            height: parent.height
            spacing: 8

            Label {
                id: actual

                objectName: marker.objectName + "Actual"
                visible: marker.isTruth
                y: value.y + value.baselineOffset - baselineOffset
                text: Words.actual
                mono: true
                size: 8
                font.weight: Font.Bold
                tracking: 0.8
                color: marker.color
            }

            Label {
                id: value

                objectName: marker.objectName + "Text"
                y: (parent.height - height) / 2
                text: marker.text
                size: 11
                font.weight: Font.DemiBold
                color: marker.color
            }
        }
    }
}
