import QtQuick
import Morvane
import Morvane.ViewModels

// What the ghost says, above it, for as long as it says it.
Rectangle {
    id: root

    required property CompanionViewModel companion

    implicitWidth: Math.min(words.implicitWidth + 2 * Theme.gap12, 240 * Theme.zoom)
    implicitHeight: words.implicitHeight + 2 * Theme.gap8
    radius: Theme.panelRadius
    color: Theme.floating
    border.width: Theme.lineWidth
    border.color: Theme.hairline
    visible: companion.bubbleText.length > 0

    Accessible.role: Accessible.Notification
    Accessible.name: companion.bubbleText

    Rectangle {
        x: 22 * Theme.zoom
        y: parent.height - height / 2
        width: 10 * Theme.zoom
        height: width
        rotation: 45
        antialiasing: true // turned edges are jagged on OpenGL otherwise
        color: root.color
        border.width: Theme.lineWidth
        border.color: Theme.hairline
    }
    Rectangle {
        x: 14 * Theme.zoom
        y: parent.height - height - 1
        width: 26 * Theme.zoom
        height: 8 * Theme.zoom
        color: root.color
    }
    SmallText {
        id: words

        anchors.fill: parent
        anchors.leftMargin: Theme.gap12
        anchors.rightMargin: Theme.gap12
        anchors.topMargin: Theme.gap8
        text: root.companion.bubbleText
        color: Theme.text
    }
}
