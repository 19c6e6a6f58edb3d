import QtQuick
import Morvane
import Morvane.ViewModels

// The ghost. It stands still; its colour and its drawing follow what the application is doing.
Item {
    id: root

    required property CompanionViewModel companion
    property int size: 40

    implicitWidth: size
    implicitHeight: size

    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("Ghost")
    Accessible.description: companion.bubbleText

    Icon {
        anchors.fill: parent
        anchors.margins: parent.size / 10
        name: root.companion.state === Companion.State.error ? "ghost-error"
            : root.companion.state === Companion.State.thinking ? "ghost-thinking" : "ghost"
        color: root.companion.state === Companion.State.error ? Theme.danger : Theme.ghost
    }
    HoverHandler {
        onHoveredChanged: root.companion.isHovering = hovered
    }
}
