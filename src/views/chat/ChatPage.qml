pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The open chat: what was said, what needs an answer, and the place to write.
FocusScope {
    id: root

    required property ChatViewModel chat
    required property ShellViewModel shell
    required property SourceMenuViewModel sources
    required property ReceiptsModel receipts
    required property CompanionViewModel companion
    required property FindViewModel find
    property bool sidebarShown: true
    readonly property real column: Math.min(Theme.columnWidth, width - 2 * Theme.gap24)
    readonly property Item messageField: writing.composer.input
    readonly property Item messageList: (conversation.item as Conversation)?.list ?? null

    signal settingsChosen()
    signal sidebarChosen()

    function focusComposer() {
        if (root.chat.ghosts.questionId.length === 0) // whoever is asked first answers
            writing.composer.takeFocus();
    }
    function goOnWriting() {
        root.focusComposer();
        writing.composer.takeFocusAtEnd();
    }
    function askForFiles() {
        writing.composer.askForFiles();
    }
    function takeDropped(handed) {
        if (!root.chat.entries.attachments.take(handed))
            root.chat.addToDraft(handed.text);
        writing.composer.takeFocusAtEnd();
    }
    function copyLastAnswer() {
        const answer = root.chat.lastAnswer();
        if (answer.length > 0)
            root.shell.copy(answer);
    }
    function scrollPage(direction: int) {
        (conversation.item as Conversation)?.scrollPage(direction);
    }
    function scrollBy(distance: real) {
        (conversation.item as Conversation)?.scrollBy(distance);
    }
    function findInChat() {
        (conversation.item as Conversation)?.openFind();
    }
    function openMenu(keeper: MenuKeeper, place: point) {
        (conversation.item as Conversation)?.openMenu(keeper, place);
    }
    function goToEnd() {
        (conversation.item as Conversation)?.goToEnd();
    }

    Keys.onEscapePressed: event => {
        const closed = root.find.close();
        event.accepted = closed || root.chat.isEditing;
        if (!closed)
            root.chat.cancelEdit();
    }

    Accessible.role: Accessible.Pane
    Accessible.name: chat.ghosts.isOn ? qsTr("Ghost chat") : chat.title

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        ChatHeader {
            Layout.fillWidth: true
            title: root.chat.title
            ghosts: root.chat.ghosts
            sidebarShown: root.sidebarShown
            onSidebarChosen: root.sidebarChosen()
            onNewChatChosen: root.chat.newConversation()
        }
        ShellNotices {
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: root.column
            Layout.fillHeight: false
            shell: root.shell
        }
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            Later {
                id: conversation

                anchors.fill: parent
                visible: wanted
                part: "chat/Conversation.qml"
                given: ({ chat: root.chat, shell: root.shell, find: root.find })
                wanted: root.chat.messages.count > 0
            }
            EmptyState {
                anchors.fill: parent
                visible: !conversation.wanted
                column: root.column
                configured: root.chat.isConfigured
                explanation: root.chat.ghosts.isOn ? root.chat.ghosts.explainer.body : ""
                companion: root.companion
                onSuggestionChosen: text => {
                    root.chat.draft = text;
                    writing.composer.takeFocusAtEnd();
                }
                onSettingsChosen: root.settingsChosen()
            }
        }
        WritingPlace {
            id: writing

            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: root.column
            Layout.bottomMargin: Theme.gap8
            chat: root.chat
            shell: root.shell
            sources: root.sources
            receipts: root.receipts
            onSettingsChosen: root.settingsChosen()
        }
    }
    ChatAnnouncements { chat: root.chat }
    Connections {
        target: root.chat

        function onQuoted() { writing.composer.takeFocusAtEnd(); }
        function onIsEditingChanged() { writing.composer.takeFocusAtEnd(); }
    }
    Connections {
        target: root.chat.entries

        // Once the draft has them.
        function onSaid() { if (writing.composer.focused) Qt.callLater(writing.composer.takeFocusAtEnd); } // qmllint disable
    }
    Connections {
        target: root.find

        function onIsOpenChanged() { if (!root.find.isOpen) root.focusComposer(); }
    }
}
