import QtQuick
import Morvane

// A key or several pressed together, as they are printed on a keyboard.
Rectangle {
    property alias text: label.text

    implicitWidth: label.implicitWidth + 16 * Theme.zoom
    implicitHeight: 22 * Theme.zoom
    radius: 6 * Theme.zoom
    color: Theme.code
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    CaptionText {
        id: label

        anchors.centerIn: parent
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
}
