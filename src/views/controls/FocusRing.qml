import QtQuick
import Morvane

// The mark of the control that the keyboard works on.
Rectangle {
    objectName: "focusRing"
    anchors.fill: parent
    anchors.margins: -Theme.focusWidth
    color: "transparent"
    radius: Theme.controlRadius + Theme.focusWidth
    border.width: visible ? Theme.focusWidth : 0 // hidden items are prepared for drawing too
    border.color: Theme.accent
}
