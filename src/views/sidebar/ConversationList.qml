pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The chats by day. Arrow keys move a marker; Return opens, F2 renames, Delete asks and deletes.
ListView {
    id: root

    required property ChatViewModel chat

    signal chatChosen()

    function open(id: string) {
        root.chat.open(id);
        root.chatChosen();
    }
    function askToDelete(id: string, title: string) {
        deletion.wanted = true;
        (deletion.item as DeletionPanel).ask(id, title);
    }

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
    Accessible.name: qsTr("Chats")

    T.ScrollBar.vertical: ScrollHandle {}

    delegate: ConversationRow {
        width: root.width - root.leftMargin - root.rightMargin
        isOpen: conversationId === root.chat.conversationId
        heading: ListView.section !== ListView.previousSection ? ListView.section : ""
        marked: ListView.isCurrentItem && root.activeFocus
        onChosen: root.open(conversationId)
        onRenamed: name => root.chat.rename(conversationId, name)
        onDeletionAsked: root.askToDelete(conversationId, title)
        onRenameEnded: root.forceActiveFocus()
    }

    Keys.onReturnPressed: (currentItem as ConversationRow)?.chosen()
    Keys.onEnterPressed: (currentItem as ConversationRow)?.chosen()
    Keys.onDeletePressed: (currentItem as ConversationRow)?.deletionAsked()
    Keys.onMenuPressed: (currentItem as ConversationRow)?.openMenu()
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F2)
            (root.currentItem as ConversationRow)?.beginRename();
        else if (event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier)
            (root.currentItem as ConversationRow)?.openMenu();
    }

    Later {
        id: deletion

        part: "sidebar/DeletionPanel.qml"
        given: ({ chat: root.chat })
    }
}
