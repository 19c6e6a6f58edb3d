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
    readonly property Item messageField: composer.input
    readonly property Item messageList: (conversation.item as Conversation)?.list ?? null

    signal settingsChosen()
    signal sidebarChosen()

    function focusComposer() {
        if (root.chat.ghosts.questionId.length === 0) // whoever is asked first answers
            composer.takeFocus();
    }
    function goOnWriting() {
        root.focusComposer();
        composer.takeFocusAtEnd();
    }
    function askForFiles() {
        composer.askForFiles();
    }
    function takeDropped(handed) {
        if (!root.chat.entries.attachments.take(handed))
            root.chat.addToDraft(handed.text);
        composer.takeFocusAtEnd();
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
        Later {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: root.column
            Layout.topMargin: Theme.gap8
            visible: wanted
            part: "chat/StartupProblem.qml"
            given: ({ message: root.shell.startupError, suggestion: root.shell.startupSuggestion })
            wanted: root.shell.startupError.length > 0
        }
        Later {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: root.column
            Layout.topMargin: Theme.gap8
            visible: wanted
            part: "chat/UnsealedNotice.qml"
            given: ({ shell: root.shell })
            wanted: root.shell.unsealedNotice.length > 0
        }
        Later {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: root.column
            Layout.topMargin: Theme.gap8
            visible: wanted
            part: "chat/StandingNotice.qml"
            given: ({ shell: root.shell })
            wanted: root.shell.noticeTitle.length > 0
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
                    composer.takeFocusAtEnd();
                }
                onSettingsChosen: root.settingsChosen()
            }
        }
        ColumnLayout {
            Layout.alignment: Qt.AlignHCenter
            Layout.maximumWidth: root.column
            Layout.bottomMargin: Theme.gap8
            spacing: Theme.gap8

            Later {
                Layout.fillWidth: true
                visible: wanted
                part: "chat/ErrorNotice.qml"
                given: ({ chat: root.chat, shell: root.shell })
                wanted: root.chat.hasBanner
            }
            Repeater {
                model: root.receipts

                UndoBar {
                    Layout.fillWidth: true
                    onUndoChosen: id => root.receipts.undo(id)
                    onDismissed: id => root.receipts.dismiss(id)
                }
            }
            Later {
                Layout.fillWidth: true
                visible: wanted
                part: "chat/DeletedNotice.qml"
                given: ({ chat: root.chat })
                wanted: root.chat.deletedCount > 0
            }
            Later {
                Layout.fillWidth: true
                visible: wanted
                part: "chat/EditNotice.qml"
                given: ({ chat: root.chat })
                wanted: root.chat.isEditing
            }
            Later {
                Layout.fillWidth: true
                visible: wanted
                part: "chat/ApprovalCard.qml"
                given: ({ chat: root.chat, composer: composer })
                wanted: root.chat.hasApproval
            }
            Composer {
                id: composer

                Layout.fillWidth: true
                chat: root.chat
                sources: root.sources
                draft: root.chat.draft
                ghost: root.chat.ghosts.isOn
                canSend: root.chat.canSend
                responding: root.chat.isResponding
                onDraftEdited: text => root.chat.draft = text
                onTyped: root.chat.noteTyping()
                onSendChosen: root.chat.send()
                onStopChosen: root.chat.stopResponding()
                onSettingsChosen: root.settingsChosen()
            }
            SourceLine {
                Layout.fillWidth: true
                destination: root.sources.destination
                warning: root.sources.warning
            }
            CaptionText {
                objectName: "modelNotice"
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.chat.entries.modelNotice
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
    Connections {
        target: root.chat

        function onIsRespondingChanged() { if (root.chat.isResponding) announcement.say(qsTr("Replying")); }
        function onQuoted() { composer.takeFocusAtEnd(); }
        function onIsEditingChanged() { composer.takeFocusAtEnd(); }
        function onReplyFinished(text: string) { announcement.say(text); }
        function onNeedsAttention() { announcement.say(root.chat.approval.verb); }
    }
    Connections {
        target: root.chat.messages

        function onStalled(words: string) { announcement.say(words); }
    }
    Connections {
        target: root.chat.ghosts

        function onIsOnChanged() {
            announcement.say(root.chat.ghosts.isOn ? qsTr("Ghost mode is on. Nothing here is kept.")
                                                   : qsTr("Ghost mode is off"));
        }
    }
    Connections {
        target: root.chat.entries.attachments

        function onAttached() {
            const desk = root.chat.entries.attachments;
            announcement.say(qsTr("Attached: %1").arg(desk.name) + ". " + desk.notice);
        }
    }
    Connections {
        target: root.chat.entries

        function onSaid(words: string) {
            announcement.say(words);
            if (composer.focused) // once the draft has them
                Qt.callLater(composer.takeFocusAtEnd); // qmllint disable
        }
    }
    Connections {
        target: root.chat.entries.voice

        function onSecondsLeftChanged() {
            const left = root.chat.entries.voice.secondsLeft;
            if (left === 30)
                announcement.say(qsTr("Listening ends in %1 seconds").arg(left));
        }
    }
    Connections {
        target: root.find

        function onIsOpenChanged() { if (!root.find.isOpen) root.focusComposer(); }
    }
    Announcement {
        id: announcement

        objectName: "announcement"

        property string words

        function say(text: string) {
            announcement.words = text;
            announcement.announce();
        }

        Accessible.role: Accessible.Notification
        Accessible.name: words
    }
}
