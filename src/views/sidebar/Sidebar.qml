pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The list of chats, with the way to a new one above it and the state of things below.
Rectangle {
    id: root

    required property ChatViewModel chat
    required property ConversationListModel conversations
    required property HistorySearchModel search
    required property FindViewModel find
    required property CompanionViewModel companion

    signal newChatChosen()
    signal newGhostChatChosen()
    signal chatChosen()
    signal settingsChosen()
    signal hideChosen()
    signal searchLeft()
    signal copyAsked(string text)

    function focusSearch() {
        field.forceActiveFocus();
        field.selectAll();
    }

    color: Theme.sidebar
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Chats")

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.margins: Theme.gap12
            Layout.bottomMargin: Theme.gap8
            spacing: Theme.gap4

            SidebarButton {
                Layout.fillWidth: true
                text: qsTr("New Chat")
                glyph: "plus"
                onClicked: root.newChatChosen()
            }
            IconButton {
                objectName: "newGhostChat"
                text: qsTr("New Ghost Chat")
                glyph: "ghost"
                onClicked: root.newGhostChatChosen()
            }
            IconButton {
                objectName: "hideSidebar"
                text: qsTr("Hide the list of chats")
                glyph: "sidebar"
                onClicked: root.hideChosen()
            }
        }
        SearchField {
            id: field

            objectName: "searchField"
            Layout.fillWidth: true
            Layout.leftMargin: Theme.gap12
            Layout.rightMargin: Theme.gap12
            Layout.bottomMargin: Theme.gap8
            onTextChanged: root.search.query = text
            onAbandoned: root.searchLeft()
            onResultsWanted: if (root.search.isActive) (results.item as Item).forceActiveFocus()
            onEntered: resultsWanted()
        }
        Later {
            id: results

            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: root.search.isActive
            part: "sidebar/SearchResults.qml"
            given: ({ chat: root.chat, search: root.search, find: root.find })
            wanted: root.search.isActive
            onLoaded: {
                (item as SearchResults).chatChosen.connect(root.chatChosen);
                (item as SearchResults).copyAsked.connect(root.copyAsked);
            }
            Keys.onEscapePressed: {
                field.clear();
                field.forceActiveFocus();
            }
        }
        ConversationList {
            objectName: "conversations"
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: !root.search.isActive
            chat: root.chat
            model: root.conversations
            onChatChosen: root.chatChosen()
        }
        Hairline { Layout.fillWidth: true }
        SidebarFoot {
            Layout.fillWidth: true
            companion: root.companion
            onSettingsChosen: root.settingsChosen()
        }
    }
    SpeechBubble {
        objectName: "speechBubble"
        x: Theme.gap8
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 60 * Theme.zoom
        companion: root.companion
    }
    Hairline {
        anchors.right: parent.right
        height: parent.height
    }
}
