import QtQuick
import Morvane

// The title of the open chat, and the sidebar's two buttons while it is hidden. Placed by bindings: a layout whose
// items come and go while it is itself being resized leaves them where they were.
Item {
    id: root

    required property string title
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
        objectName: "chatTitle"
        x: root.sidebarShown ? Theme.gap24 : begin.x + begin.width + Theme.gap12
        y: Theme.gap12
        width: Math.max(0, root.width - x - Theme.gap24)
        height: Theme.controlHeight
        text: root.title
        color: Theme.text
        font.weight: Font.Medium
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        wrapMode: Text.NoWrap
        maximumLineCount: 1
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
}
