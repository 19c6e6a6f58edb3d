import QtQuick
import Morvane

// A change with its direction told by arrow and colour; the words are as they were written.
Row {
    id: root

    required property string change
    required property int direction // 1 up, -1 down, 0 neither
    property real room: Infinity
    readonly property color ink: direction > 0 ? Theme.success : direction < 0 ? Theme.danger : Theme.secondary

    spacing: 2

    Accessible.role: Accessible.StaticText
    Accessible.name: direction > 0 ? qsTr("up %1").arg(change)
        : direction < 0 ? qsTr("down %1").arg(change) : change

    Icon {
        anchors.verticalCenter: parent.verticalCenter
        visible: root.direction !== 0
        width: 12 * Theme.zoom
        height: 12 * Theme.zoom
        name: root.direction > 0 ? "arrow-up" : "arrow-down"
        color: root.ink
    }
    SmallCardText {
        width: Math.min(implicitWidth, root.room - x)
        text: root.change
        color: root.ink
        font.weight: Font.Medium
    }
}
