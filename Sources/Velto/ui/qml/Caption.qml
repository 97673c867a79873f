import QtQuick
import Velto

// A line of small text in the side panel.
Label {
    height: 12
    size: 9
    color: Theme.palette.faint
}
