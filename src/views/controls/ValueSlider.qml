import QtQuick
import QtQuick.Templates as T
import Morvane

// A number on a line. Say in Accessible.name what it sets.
T.Slider {
    id: root

    implicitWidth: 180 * Theme.zoom
    implicitHeight: 24 * Theme.zoom

    handle: Rectangle {
        x: root.leftPadding + root.visualPosition * (root.availableWidth - width)
        y: (root.height - height) / 2
        width: 18 * Theme.zoom
        height: 18 * Theme.zoom
        radius: 9 * Theme.zoom
        color: root.pressed ? Theme.accent : Theme.card
        border.width: 2
        border.color: Theme.accent

        FocusRing {
            radius: 11 * Theme.zoom
            visible: root.visualFocus
        }
    }
    background: Rectangle {
        y: (root.height - height) / 2
        width: root.width
        height: 4 * Theme.zoom
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
