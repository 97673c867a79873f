pragma ComponentBehavior: Bound
import QtQuick
import Velto

// The status before grading, the verdict after it.
Item {
    id: verdict

    required property PracticeModel session
    property bool opened: false // the first frame is on the screen
    readonly property color gradeColor: session.correct ? Theme.palette.good : Theme.palette.bad

    implicitHeight: 36

    Label {
        objectName: "status"
        visible: !verdict.session.graded && !failure.visible
        x: 10
        height: parent.height
        text: verdict.session.status
        size: 11
        color: Theme.palette.muted
    }

    // Why there is no verdict.
    Label {
        id: failure

        objectName: "failure"
        visible: !verdict.session.graded && text !== ""
        x: 10
        width: place.x - x - 14
        height: parent.height
        wrapMode: Text.WordWrap
        text: verdict.session.keepingError
        size: 11
        color: Theme.palette.bad

        // Screen readers speak a notification when it appears.
        Accessible.role: Accessible.Notification
    }

    Label {
        id: place

        objectName: "place"
        visible: text !== ""
        z: 1
        anchors.right: parent.right
        anchors.rightMargin: 12
        height: parent.height
        text: verdict.session.place
        size: 11
        color: Theme.palette.muted

        Accessible.name: Words.spokenProgress(text)
    }

    RoundedBox {
        objectName: "verdictBox"
        visible: verdict.session.graded
        anchors.fill: parent
        radius: 8
        continuous: true
        color: Palettes.faded(verdict.gradeColor, verdict.session.correct ? 0.1 : 0.08)

        // Screen readers speak a notification when it appears.
        Accessible.role: Accessible.Notification
        Accessible.name: verdict.session.announcement

        Postponed {
            shown: verdict.session.graded
            opened: verdict.opened

            Row {
                x: 12
                height: parent.height
                spacing: 14

                RoundedBox {
                    objectName: "verdictDot"
                    anchors.verticalCenter: parent.verticalCenter
                    width: 8
                    height: 8
                    dot: true
                    color: verdict.gradeColor
                }

                Label {
                    objectName: "verdictWord"
                    partOfName: true
                    height: parent.height
                    text: verdict.session.verdict
                    size: 12
                    font.weight: Font.Bold
                    tracking: 2
                    color: verdict.gradeColor
                }

                Label {
                    objectName: "verdictDetail"
                    partOfName: true
                    height: parent.height
                    text: verdict.session.verdictDetail
                    size: 12
                }
            }
        }
    }
}
