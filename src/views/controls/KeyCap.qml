import QtQuick
import Morvane

// A key or several pressed together, as they are printed on a keyboard.
Rectangle {
    property alias text: label.text

    implicitWidth: label.implicitWidth + 16
    implicitHeight: 22
    radius: 6
    color: Theme.code
    border.width: 1
    border.color: Theme.hairline

    CaptionText {
        id: label

        anchors.centerIn: parent
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
}
