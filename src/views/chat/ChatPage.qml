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
    required property NoteReceiptsModel receipts
    required property CompanionViewModel companion
    property bool sidebarShown: true
    readonly property real column: Math.min(Theme.columnWidth, width - 2 * Theme.gap24)

    signal settingsChosen()
    signal sidebarChosen()

    function focusComposer() {
        composer.takeFocus();
    }
    function copyLastAnswer() {
        const answer = root.chat.lastAnswer();
        if (answer.length > 0)
            root.shell.copy(answer);
    }
    function scrollPage(direction: int) {
        messages.scrollBy(direction * messages.height * 0.85);
    }
    function goToEnd() {
        messages.goToEnd();
    }

    Accessible.role: Accessible.Pane
    Accessible.name: chat.title

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        ChatHeader {
            Layout.fillWidth: true
            title: root.chat.title
            sidebarShown: root.sidebarShown
            onSidebarChosen: root.sidebarChosen()
            onNewChatChosen: root.chat.newConversation()
        }
        StartupProblem {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: root.column
            Layout.topMargin: Theme.gap8
            visible: message.length > 0
            message: root.shell.startupError
            suggestion: root.shell.startupSuggestion
        }
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            MessageList {
                id: messages

                objectName: "messages"
                anchors.fill: parent
                column: root.column
                visible: count > 0
                model: root.chat.messages
                onCopyAsked: text => root.shell.copy(text)
                onLinkAsked: address => root.shell.openLink(address)
                onContinueAsked: messageId => root.chat.continueReply(messageId)
            }
            ToEndButton {
                objectName: "toEnd"
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.gap12
                anchors.horizontalCenter: parent.horizontalCenter
                shown: messages.visible && !messages.following && messages.gapToEnd > 64
                onClicked: messages.goToEnd()
            }
            EmptyState {
                anchors.fill: parent
                visible: messages.count === 0
                column: root.column
                configured: root.chat.isConfigured
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

            ErrorNotice {
                Layout.fillWidth: true
                visible: root.chat.hasBanner
                message: root.chat.banner.message
                suggestion: root.chat.banner.suggestion
                retryable: root.chat.banner.retryable
                onRetryChosen: root.chat.retryLastTurn()
                onDismissed: root.chat.dismissBanner()
            }
            Repeater {
                model: root.receipts

                UndoBar {
                    Layout.fillWidth: true
                    onUndoChosen: id => root.receipts.undo(id)
                    onDismissed: id => root.receipts.dismiss(id)
                }
            }
            ApprovalCard {
                objectName: "approval"
                Layout.fillWidth: true
                visible: root.chat.hasApproval
                verb: root.chat.approval.verb
                detail: root.chat.approval.detail
                footnote: root.chat.approval.footnote
                offersChatWideYes: root.chat.approval.offersChatWideYes
                deadline: root.chat.approvalDeadline
                onAllowed: root.chat.approve()
                onAllowedForChat: root.chat.approveForChat()
                onDeclined: root.chat.decline()
                onAnswered: root.focusComposer()
            }
            Composer {
                id: composer

                Layout.fillWidth: true
                draft: root.chat.draft
                canSend: root.chat.canSend
                responding: root.chat.isResponding
                onDraftEdited: text => root.chat.draft = text
                onSendChosen: root.chat.send()
                onStopChosen: root.chat.stopResponding()
            }
            SourceLine {
                Layout.fillWidth: true
                destination: root.sources.destination
                warning: root.sources.warning
            }
        }
    }
    Connections {
        target: root.chat

        function onMessageSent() { messages.bringTurnUp(); }
        function onConversationChanged() { messages.startOver(); }
        function onIsRespondingChanged() { if (root.chat.isResponding) announcement.say(qsTr("Replying")); }
        function onReplyFinished(text: string) { announcement.say(text); }
    }
    Announcement {
        id: announcement

        objectName: "announcement"

        property string words

        function say(text: string) {
            announcement.words = text;
            announcement.announce();
        }

        Accessible.role: Accessible.AlertMessage
        Accessible.name: words
    }
}
