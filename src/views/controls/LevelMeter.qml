import QtQuick
import Morvane

// How loud it is. Asks for it twenty times a second while it is seen; less often where less is to move.
Rectangle {
    id: root

    property real level: 0 // 0 to 1
    property bool asks: true

    signal asked()

    implicitWidth: 96 * Theme.zoom
    implicitHeight: 6 * Theme.zoom
    radius: 3
    color: Theme.hairline
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Loudness")

    Rectangle {
        width: Math.max(parent.height, (root.asks ? root.level : 0) * parent.width)
        height: parent.height
        radius: parent.radius
        color: Theme.accent
    }
    Timer {
        interval: Theme.reduceAnimation ? 250 : 50
        repeat: true
        running: root.visible && root.asks
        onTriggered: root.asked()
    }
}
