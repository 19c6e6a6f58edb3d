import QtQuick
import QtQuick.Templates as T
import Morvane

// On or off, at once.
T.Switch {
    id: root

    function activate() {
        root.toggle();
        root.toggled();
    }

    implicitWidth: 40 * Theme.zoom
    implicitHeight: 24 * Theme.zoom

    Accessible.name: text
    Keys.onReturnPressed: root.activate()
    Keys.onEnterPressed: root.activate()

    indicator: Rectangle {
        width: 40 * Theme.zoom
        height: 24 * Theme.zoom
        radius: 12 * Theme.zoom
        color: root.checked ? Theme.accent : "transparent"
        border.width: root.checked ? 0 : Theme.lineWidth
        border.color: Theme.outline

        Rectangle {
            x: root.checked ? parent.width - width - Theme.gap4 : Theme.gap4
            anchors.verticalCenter: parent.verticalCenter
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
            radius: 8 * Theme.zoom
            color: root.checked ? Theme.accentInk : Theme.outline

            Behavior on x { Motion { duration: Theme.press } }
        }
        FocusRing {
            radius: 14 * Theme.zoom
            visible: root.visualFocus
        }
    }
    contentItem: Item {}
}
