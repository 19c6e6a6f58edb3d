import QtQuick
import Morvane
import Morvane.ViewModels

// The place of the list of chats: beside the chat, or over it where the window is too narrow for both.
Item {
    id: root

    required property ChatViewModel chat
    required property ConversationListModel conversations
    required property HistorySearchModel search
    required property FindViewModel find
    required property CompanionViewModel companion
    required property ShellViewModel shell
    required property SettingsStore settings

    readonly property bool narrow: width < 800 * Theme.zoom
    property bool over: false // it lies over the chat
    readonly property bool shown: narrow ? over : settings.chatHistoryOpen
    readonly property real taken: narrow ? 0 : Math.max(0, frame.x + frame.width)

    signal newChatChosen()
    signal newGhostChatChosen()
    signal settingsChosen()
    signal dismissed() // what it was wanted for is done

    function toggle() {
        if (root.narrow)
            root.over = !root.over;
        else
            root.settings.chatHistoryOpen = !root.settings.chatHistoryOpen;
    }
    function findChat() {
        if (!root.shown)
            root.toggle();
        list.focusSearch();
    }

    onNarrowChanged: over = false

    SidebarScrim {
        anchors.fill: parent
        shown: root.narrow && root.over
        onDismissed: root.over = false
    }
    SidebarFrame {
        id: frame

        objectName: "sidebar"
        height: parent.height
        shown: root.shown
        resizable: !root.narrow
        chosenWidth: root.settings.chatHistoryWidth
        room: root.width
        onWidthChosen: width => root.settings.chatHistoryWidth = width

        Sidebar {
            id: list

            anchors.fill: parent
            chat: root.chat
            conversations: root.conversations
            search: root.search
            find: root.find
            companion: root.companion
            onNewChatChosen: root.newChatChosen()
            onNewGhostChatChosen: root.newGhostChatChosen()
            onChatChosen: {
                root.over = false;
                root.dismissed();
            }
            onSettingsChosen: root.settingsChosen()
            onHideChosen: root.toggle()
            onSearchLeft: root.dismissed()
            onCopyAsked: text => root.shell.copy(text)
        }
    }
}
