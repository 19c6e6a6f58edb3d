pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The chats that a search found. Arrow keys move a marker; Return opens.
ListView {
    id: root

    required property ChatViewModel chat
    required property HistorySearchModel search
    required property FindViewModel find

    signal chatChosen()
    signal copyAsked(string text)

    // At the words that were found, unless it was by its title.
    function open(id: string, messageId: string) {
        root.chat.open(id);
        root.chatChosen();
        if (messageId.length > 0 && root.chat.conversationId === id) // the person may be asked first
            root.find.openAt(root.search.query, messageId);
    }

    objectName: "searchResults"
    model: search
    leftMargin: Theme.gap12
    rightMargin: Theme.gap12
    bottomMargin: Theme.gap12
    spacing: 2
    clip: true
    reuseItems: true
    activeFocusOnTab: true
    keyNavigationEnabled: true
    highlightMoveDuration: 0
    boundsBehavior: Flickable.StopAtBounds
    section.property: "section"

    Accessible.role: Accessible.List
    Accessible.name: qsTr("Search results")

    T.ScrollBar.vertical: ScrollHandle {}

    delegate: SearchResultRow {
        width: root.width - root.leftMargin - root.rightMargin
        isOpen: conversationId === root.chat.conversationId
        heading: ListView.section !== ListView.previousSection ? ListView.section : ""
        marked: ListView.isCurrentItem && root.activeFocus
        onChosen: root.open(conversationId, messageId)
        onCopyAsked: text => root.copyAsked(text)
    }

    Keys.onReturnPressed: (currentItem as SearchResultRow)?.chosen()
    Keys.onEnterPressed: (currentItem as SearchResultRow)?.chosen()
    Keys.onMenuPressed: (currentItem as SearchResultRow)?.openMenu()
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier)
            (root.currentItem as SearchResultRow)?.openMenu();
    }

    SmallText {
        objectName: "searchState"
        x: Theme.gap12
        y: Theme.gap16
        width: root.width - 2 * Theme.gap24
        visible: root.count === 0
        text: root.search.isSearching ? qsTr("Searching…") : qsTr("No chat has these words.")
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
