import QtQuick

Rectangle {
    color: "#FAF3EF"
}
