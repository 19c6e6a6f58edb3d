import QtQuick
import Morvane

// Lies over a control while the pointer is on it, and darker while it is held down.
Rectangle {
    property bool hovered: false
    property bool down: false

    anchors.fill: parent
    radius: Theme.controlRadius
    color: down ? Theme.pressWash : hovered ? Theme.hoverWash : Theme.noWash

    Behavior on color {
        ColorAnimation {
            duration: Theme.wash
            easing.type: Easing.OutCubic
        }
    }
}
