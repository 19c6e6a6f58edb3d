import QtQuick
import QtQuick.Templates as T
import Morvane

// A number on a line. Say in Accessible.name what it sets.
T.Slider {
    id: root

    implicitWidth: 180
    implicitHeight: 24

    handle: Rectangle {
        x: root.leftPadding + root.visualPosition * (root.availableWidth - width)
        y: (root.height - height) / 2
        width: 18
        height: 18
        radius: 9
        color: root.pressed ? Theme.accent : Theme.card
        border.width: 2
        border.color: Theme.accent

        FocusRing {
            radius: 11
            visible: root.visualFocus
        }
    }
    background: Rectangle {
        y: (root.height - height) / 2
        width: root.width
        height: 4
        radius: 2
        color: Theme.hairline

        Rectangle {
            width: root.visualPosition * parent.width
            height: parent.height
            radius: 2
            color: Theme.accent
        }
    }
}
