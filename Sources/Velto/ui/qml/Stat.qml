import QtQuick
import Velto

// A figure over its label.
Item {
    id: stat

    property string label
    property string value
    property string spoken // both, for screen readers

    implicitHeight: 54

    Accessible.role: Accessible.StaticText
    Accessible.name: spoken

    RoundedBox {
        objectName: "statBox" + stat.label
        anchors.fill: parent
        radius: 8
        strokeColor: Theme.palette.line
        strokeWidth: 1
    }

    Label {
        objectName: "statValue" + stat.label
        partOfName: true
        anchors.horizontalCenter: parent.horizontalCenter
        y: 8
        height: 24
        text: stat.value
        size: 19
        brand: true
    }

    Label {
        objectName: "statLabel" + stat.label
        partOfName: true
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.horizontalCenterOffset: tracking / 2 // for the tracking after the last letter
        y: 35
        height: 10
        text: stat.label
        size: 8
        font.weight: Font.Medium
        tracking: 1.2
        color: Theme.palette.faint
    }
}
