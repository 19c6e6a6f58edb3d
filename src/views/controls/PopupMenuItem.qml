import QtQuick
import QtQuick.Templates as T
import Morvane

T.MenuItem {
    id: root

    property bool dangerous: false
    property bool offered: true // fits what the menu is about

    implicitWidth: 172 * Theme.zoom
    implicitHeight: Theme.controlHeight
    height: offered ? implicitHeight : 0 // a menu shows all of its items
    activeFocusOnTab: offered && enabled // the arrow keys go by it
    horizontalPadding: 10 * Theme.zoom

    Accessible.name: text
    Accessible.ignored: !offered

    contentItem: SmallText {
        visible: root.offered
        text: root.text
        color: !root.enabled ? Theme.disabled : root.dangerous ? Theme.danger : Theme.text
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: root.highlighted || root.hovered ? Theme.currentWash : "transparent"
    }
}
