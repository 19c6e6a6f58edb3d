import QtQuick
import Morvane

// The time left to answer, as a thin bar that takes a step each second.
Rectangle {
    id: root

    required property date deadline
    property real allowedSeconds: 120
    property real secondsLeft: allowedSeconds

    function look() {
        root.secondsLeft = Math.max(0, (root.deadline.getTime() - Date.now()) / 1000);
    }

    objectName: "countdown"
    implicitHeight: 3
    radius: 1.5
    color: Theme.hairline

    Accessible.role: Accessible.ProgressBar
    // In steps of half a minute: assistive technology says each change.
    Accessible.name: qsTr("Less than %1 seconds left to answer").arg(30 * (Math.floor(secondsLeft / 30) + 1))

    onDeadlineChanged: look()

    Timer {
        interval: 1000
        repeat: true
        running: root.visible && root.secondsLeft > 0
        onTriggered: root.look()
    }
    Rectangle {
        width: parent.width * Math.min(1, root.secondsLeft / root.allowedSeconds)
        height: parent.height
        radius: parent.radius
        color: Theme.accent
    }
}
