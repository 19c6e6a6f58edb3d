import QtQuick
import Morvane

// Dims the chat while the sidebar lies over it; a press on it puts the sidebar away.
Rectangle {
    id: root

    property bool shown: false

    signal dismissed()

    color: Theme.scrim
    opacity: shown ? 1 : 0
    visible: opacity > 0

    Behavior on opacity { Motion { duration: Theme.fade } }

    MouseArea {
        anchors.fill: parent
        onClicked: root.dismissed()
        onWheel: wheel => wheel.accepted = true
    }
}
