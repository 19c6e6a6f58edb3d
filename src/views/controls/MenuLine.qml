import QtQuick
import QtQuick.Templates as T
import Morvane

// Parts the entries of a menu.
T.MenuSeparator {
    implicitWidth: 172 * Theme.zoom
    implicitHeight: 9 * Theme.zoom

    contentItem: Item {
        Hairline {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
        }
    }
}
