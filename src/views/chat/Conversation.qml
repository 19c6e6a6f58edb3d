import QtQuick
import Morvane
import Morvane.ViewModels

// What was said in the open chat, and the way back to its end.
ChatSelection {
    id: root

    required property ChatViewModel chat
    required property ShellViewModel shell
    required property FindViewModel find

    readonly property Item list: messages

    view: messages
    model: root.chat.messages // qmllint disable
    onCopyAsked: text => root.shell.copy(text)
    onScrollAsked: distance => messages.scrollBy(distance)

    function scrollPage(direction: int) {
        messages.scrollBy(direction * messages.height * 0.85);
    }
    function scrollBy(distance: real) {
        messages.scrollBy(distance);
    }
    function openMenu(keeper: MenuKeeper, place: point) {
        menu.keeper = keeper;
        menu.wanted = true;
        (menu.item as MessageMenu).popup(keeper, place.x, place.y);
    }
    function goToEnd() {
        messages.goToEnd();
    }

    function openFind() {
        if (messages.count > 0)
            root.find.open(marks.topRow());
    }

    MessageList {
        id: messages

        objectName: "messages"
        anchors.fill: parent
        column: Math.min(Theme.columnWidth, root.width - 2 * Theme.gap24)
        visible: count > 0
        topMargin: Theme.gap8 + (bar.wanted ? bar.height + Theme.gap8 : 0) // the first words can stand below the bar
        messages: root.chat.messages
        responding: root.chat.isResponding
        canRead: root.chat.reader.isAvailable
        readingId: root.chat.reader.readingId
        chosen: root.wholeChat
        lastQuestion: root.chat.messages.lastQuestion
        onCopyAsked: text => root.shell.copy(text)
        onReadAsked: messageId => root.chat.reader.toggle(messageId)
        onLinkAsked: address => root.shell.openLink(address)
        onProofAsked: messageId => root.chat.proofPanel.open(messageId)
        onContinueAsked: messageId => root.chat.continueReply(messageId)
        onRetryAsked: root.chat.retryLastTurn()
        onStopAsked: root.chat.stopResponding()
        onRegenerateAsked: root.chat.regenerate()
        onVersionAsked: (messageId, distance) => root.chat.showVersion(messageId, distance)
        onEditAsked: messageId => root.chat.beginEdit(messageId)
        onDeleteAsked: messageId => root.chat.deleteMessage(messageId)
    }
    ToEndButton {
        objectName: "toEnd"
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gap12
        anchors.horizontalCenter: parent.horizontalCenter
        shown: messages.visible && !messages.following && messages.gapToEnd > 64
        onClicked: messages.goToEnd()
    }
    FindMarks {
        id: marks

        view: messages
        terms: root.find.terms
        place: root.find.current
        covered: bar.height + Theme.gap8
        color: Theme.find
        currentColor: Theme.currentFind
        outline: Theme.warning
        onPlaceChanged: if (root.find.current.row >= 0) messages.following = false
    }
    Notice {
        id: bar

        anchors.top: parent.top
        anchors.topMargin: Theme.gap8
        anchors.right: parent.right
        anchors.rightMargin: Theme.gap16
        width: Math.min(implicitWidth, parent.width - 2 * Theme.gap16)
        part: "chat/FindBar.qml"
        given: ({ find: root.find })
        wanted: root.find.isOpen
    }
    Later {
        id: menu

        property MenuKeeper keeper

        part: "chat/MessageMenu.qml"
        given: ({ keeper: keeper, selection: root, chat: root.chat, shell: root.shell })
    }
    Connections {
        target: root.chat

        function onMessageSent() { messages.bringTurnUp(); }
        function onConversationChanged() { messages.startOver(); }
    }
}
