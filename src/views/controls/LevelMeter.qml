import QtQuick
import Morvane

// How loud it is. Asks for it twenty times a second while it is seen.
Rectangle {
    id: root

    property real level: 0 // 0 to 1

    signal asked()

    implicitWidth: 96
    implicitHeight: 6
    radius: 3
    color: Theme.hairline
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Loudness")

    Rectangle {
        width: Math.max(parent.height, root.level * parent.width)
        height: parent.height
        radius: parent.radius
        color: Theme.accent
    }
    Timer {
        interval: 50
        repeat: true
        running: root.visible
        onTriggered: root.asked()
    }
}
