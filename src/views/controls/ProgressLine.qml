import QtQuick
import Morvane

// How far something is, as a bar. What isn't known is an empty bar: nothing moves for the sake of moving.
Rectangle {
    id: root

    property real progress: -1 // 0 to 1; below 0 where it isn't known

    implicitHeight: 4 * Theme.zoom
    radius: 2
    color: Theme.hairline

    Accessible.role: Accessible.ProgressBar
    // In tenths: assistive technology says each change.
    Accessible.name: progress < 0 ? qsTr("Under way") : qsTr("%1 % done").arg(10 * Math.floor(progress * 10))

    Rectangle {
        width: parent.width * Math.max(0, Math.min(1, root.progress))
        height: parent.height
        radius: parent.radius
        color: Theme.accent
    }
}
