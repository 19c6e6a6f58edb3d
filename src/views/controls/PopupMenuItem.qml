import QtQuick
import QtQuick.Templates as T
import Morvane

T.MenuItem {
    id: root

    property bool dangerous: false

    implicitWidth: 172
    implicitHeight: Theme.controlHeight
    horizontalPadding: 10

    Accessible.name: text

    contentItem: SmallText {
        text: root.text
        color: root.dangerous ? Theme.danger : Theme.text
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: root.highlighted || root.hovered ? Theme.currentWash : "transparent"
    }
}
