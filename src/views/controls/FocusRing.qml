import QtQuick
import Morvane

// The mark of the control that the keyboard works on.
Rectangle {
    anchors.fill: parent
    anchors.margins: -Theme.focusWidth
    color: "transparent"
    radius: Theme.controlRadius + Theme.focusWidth
    border.width: Theme.focusWidth
    border.color: Theme.accent
}
