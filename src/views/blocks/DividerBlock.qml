import QtQuick
import Morvane

Item {
    objectName: "divider"
    width: parent?.width ?? 0
    implicitHeight: 9 * Theme.zoom

    Accessible.role: Accessible.Separator
    Accessible.name: qsTr("Divider")

    Hairline {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
    }
}
