import QtQuick
import Morvane
import Morvane.ViewModels

// The title of the open chat, the Ghost button, and the sidebar's two buttons while it is hidden. Placed by
// bindings: a layout whose items come and go while it is itself being resized leaves them where they were.
Item {
    id: root

    required property string title
    required property GhostDesk ghosts
    property bool sidebarShown: true

    signal sidebarChosen()
    signal newChatChosen()

    implicitHeight: Theme.gap12 + Theme.controlHeight

    IconButton {
        id: list

        objectName: "showSidebar"
        x: Theme.gap12
        y: Theme.gap12
        visible: !root.sidebarShown
        text: qsTr("Show the list of chats")
        glyph: "sidebar"
        onClicked: root.sidebarChosen()
    }
    IconButton {
        id: begin

        objectName: "headerNewChat"
        x: list.x + list.width + Theme.gap4
        y: Theme.gap12
        visible: !root.sidebarShown
        text: qsTr("New Chat")
        glyph: "plus"
        onClicked: root.newChatChosen()
    }
    SmallText {
        id: heading

        objectName: "chatTitle"
        x: root.sidebarShown ? Theme.gap24 : begin.x + begin.width + Theme.gap12
        y: Theme.gap12
        width: Math.max(0, Math.min(implicitWidth, ghost.x - x - Theme.gap12))
        height: Theme.controlHeight
        text: root.ghosts.isOn ? qsTr("Ghost chat") : root.title // not its words: it is to be seen what it is
        color: root.ghosts.isOn ? Theme.ghost : Theme.text
        font.weight: Font.Medium
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        wrapMode: Text.NoWrap
        maximumLineCount: 1
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    GhostBadge {
        x: heading.x + heading.width + Theme.gap12
        y: Theme.gap12 + (Theme.controlHeight - height) / 2
        width: Math.max(0, Math.min(implicitWidth, ghost.x - x - Theme.gap8))
        visible: root.ghosts.isOn
        isSaved: root.ghosts.savesWhenTurnEnds
    }
    GhostButton {
        id: ghost

        x: root.width - width - Theme.gap12
        y: Theme.gap12
        ghosts: root.ghosts
    }
}
