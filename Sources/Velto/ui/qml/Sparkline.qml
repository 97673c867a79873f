pragma ComponentBehavior: Bound
import QtQuick
import Velto

// The difficulty over the newest answers of a drill.
Item {
    id: sparkline

    property list<double> difficulties
    property string title
    property string description // the curve for screen readers
    readonly property bool drawn: difficulties.length > 1

    implicitHeight: 64

    Accessible.role: Accessible.Chart
    Accessible.name: title
    Accessible.description: description

    Repeater {
        model: sparkline.drawn ? [0.25, 0.5, 0.75] : []

        Rectangle {
            required property int index
            required property real modelData

            objectName: "hairline" + index
            y: sparkline.height * modelData
            width: sparkline.width
            height: 1
            color: Theme.palette.line
        }
    }

    RoundedBox {
        objectName: "curveFrame"
        visible: sparkline.drawn
        anchors.fill: parent
        radius: 6
        strokeColor: Theme.palette.line
        strokeWidth: 1
    }

    CurveLine {
        objectName: "curve"
        visible: sparkline.drawn
        anchors.fill: parent
        radius: 6
        difficulties: sparkline.difficulties
        color: Theme.palette.control
        lineWidth: 1.6
    }

    Label {
        objectName: "curveHint"
        visible: !sparkline.drawn
        height: parent.height
        text: Words.curveHint
        mono: true
        size: 9
        color: Theme.palette.faint
    }
}
