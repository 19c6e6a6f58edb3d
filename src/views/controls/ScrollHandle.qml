import QtQuick
import QtQuick.Templates as T
import Morvane

// A scroll bar that shows only where there is something to scroll.
T.ScrollBar {
    id: root

    implicitWidth: 10 * Theme.zoom
    implicitHeight: 10 * Theme.zoom
    padding: 2
    minimumSize: 0.06
    visible: size < 1

    contentItem: Rectangle {
        radius: Math.min(width, height) / 2
        color: root.pressed ? Theme.secondary : Theme.outline
        opacity: root.pressed ? 1 : root.hovered ? 0.8 : root.active ? 0.6 : 0.3

        Behavior on opacity { Motion { duration: Theme.fade } }
    }
}
