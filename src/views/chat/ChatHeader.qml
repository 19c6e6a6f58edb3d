import QtQuick
import QtQuick.Layouts
import Morvane

// The title of the open chat, and the sidebar's two buttons while it is hidden.
RowLayout {
    id: root

    required property string title
    property bool sidebarShown: true

    signal sidebarChosen()
    signal newChatChosen()

    spacing: Theme.gap4

    IconButton {
        objectName: "showSidebar"
        Layout.leftMargin: Theme.gap12
        Layout.topMargin: Theme.gap12
        visible: !root.sidebarShown
        text: qsTr("Show the list of chats")
        glyph: "sidebar"
        onClicked: root.sidebarChosen()
    }
    IconButton {
        Layout.topMargin: Theme.gap12
        visible: !root.sidebarShown
        text: qsTr("New Chat")
        glyph: "plus"
        onClicked: root.newChatChosen()
    }
    SmallText {
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap12
        Layout.leftMargin: root.sidebarShown ? Theme.gap24 : Theme.gap8
        Layout.rightMargin: Theme.gap24
        Layout.preferredHeight: Theme.controlHeight
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
