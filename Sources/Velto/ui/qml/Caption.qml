import QtQuick
import Velto

// A small line between the parts of the side panel.
Label {
    height: 12
    size: 9
    color: Theme.palette.faint
}
