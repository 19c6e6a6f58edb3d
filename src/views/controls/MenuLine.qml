import QtQuick
import QtQuick.Templates as T
import Morvane

// Parts the entries of a menu.
T.MenuSeparator {
    implicitWidth: 172 * Theme.zoom
    implicitHeight: 9 * Theme.zoom

    contentItem: Item {
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
            height: Theme.lineWidth
            color: Theme.hairline
        }
    }
}
