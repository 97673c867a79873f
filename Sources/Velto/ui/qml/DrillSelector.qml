pragma ComponentBehavior: Bound
import QtQuick
import Velto

// One chip per drill.
Row {
    id: selector

    required property PracticeModel session

    spacing: 4

    Accessible.role: Accessible.Grouping
    Accessible.name: Words.drills

    Repeater {
        id: chips

        model: selector.session.drillTitles

        Choice {
            id: chip

            required property string modelData

            objectName: "drill" + index
            // Sized for the bold text, so that choosing a drill does not move the other chips.
            implicitWidth: metrics.widthOf(modelData) + content.titleLeft + 24
            implicitHeight: content.implicitHeight + 12
            ringRadius: 6
            name: modelData
            available: selector.session.isFree
            choices: chips
            chosen: selector.session.drill
            onPicked: index => selector.session.drill = index

            ChoiceBox {
                objectName: "drillBox" + chip.index
                anchors.fill: parent
                radius: chip.ringRadius
                current: chip.current
                available: chip.available
                tint: chip.tint
                framed: false
            }

            Row {
                id: content

                readonly property real titleLeft: dot.width + spacing

                x: 12
                y: 6
                spacing: 5

                RoundedBox {
                    id: dot

                    objectName: "drillDot" + chip.index
                    anchors.verticalCenter: parent.verticalCenter
                    width: 6
                    height: 6
                    dot: true
                    color: chip.available && chip.current ? Theme.palette.identity : Theme.palette.faint
                }

                Label {
                    objectName: "drillLabel" + chip.index
                    partOfName: true
                    text: chip.modelData
                    size: 12
                    font.weight: chip.current ? Font.DemiBold : Font.Normal
                    color: chip.available ? (chip.current || chip.tint > 0 ? Theme.palette.ink : Theme.palette.muted) : chip.current ? Theme.palette.muted : Theme.palette.faint
                }
            }

            TextMeasure {
                id: metrics

                font.family: Fonts.system
                font.pixelSize: 12
                font.weight: Font.DemiBold
            }
        }
    }
}
