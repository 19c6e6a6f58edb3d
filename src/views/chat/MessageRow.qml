import QtQuick
import Morvane
import Morvane.ViewModels

// One row of the list: what the person said, or the reply. It holds the drawing of both, so that a row that is
// reused for the other kind builds nothing.
Item {
    id: root

    required property int index
    required property string messageId
    required property bool isUser
    required property string text
    required property string thinking
    required property string thinkingLabel
    required property bool failed
    required property bool cancelled
    required property bool interrupted
    required property bool running
    required property string indicatorText
    required property bool stalled
    required property string errorText
    required property list<string> toolLines
    required property list<string> toolStates
    required property list<string> sources
    required property string attachmentName
    required property bool canContinue
    required property string place
    required property string proofMark
    required property MessageListModel messages
    required property int version
    required property int versionCount
    property real column: Theme.columnWidth
    property bool isLast: false
    property bool isLastQuestion: false
    property bool responding: false
    property bool canRead: false
    property bool reading: false
    property bool chosen: false // with the whole chat, to be copied
    readonly property bool canRegenerate: isLast && !responding && !running && !failed && !interrupted
    property bool waits: false // to be used again: its properties belong to two messages for a moment

    signal copyAsked(string text)
    signal readAsked()
    signal linkAsked(string address)
    signal proofAsked()
    signal continueAsked(string messageId)
    signal retryAsked()
    signal stopAsked()
    signal regenerateAsked()
    signal versionAsked(int distance)
    signal editAsked()
    signal deleteAsked()

    // The drawing that is hidden keeps its words until it has others to show, so that it changes what differs and
    // builds nothing anew.
    function showText() {
        if (!root.waits)
            (root.isUser ? question : answer).text = root.text;
    }

    implicitHeight: isUser ? question.implicitHeight : answer.implicitHeight

    onTextChanged: root.showText()
    onMessageIdChanged: question.unfolded = false
    Component.onCompleted: root.showText()
    ListView.onPooled: root.waits = true
    ListView.onReused: {
        root.waits = false;
        root.showText();
        answer.reused();
    }

    Accessible.role: Accessible.ListItem
    Accessible.name: root.isUser ? qsTr("Your message") : qsTr("Reply")

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        width: root.column + 2 * Theme.gap12
        y: -Theme.gap4 // rows stand twice that apart, and a selection has no gaps
        height: parent.height + 2 * Theme.gap4
        visible: root.chosen
        color: Theme.selection
    }
    UserMessage {
        id: question

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.column
        visible: root.isUser
        text: ""
        attachmentName: root.attachmentName
        canEdit: root.isLastQuestion && !root.responding
        canDelete: !root.responding
        onEditAsked: root.editAsked()
        onDeleteAsked: root.deleteAsked()
    }
    ReplyMessage {
        id: answer

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.column
        visible: !root.isUser
        messages: root.messages
        messageId: root.messageId
        text: ""
        thinking: root.thinking
        thinkingLabel: root.thinkingLabel
        failed: root.failed
        cancelled: root.cancelled
        interrupted: root.interrupted
        running: root.running
        indicatorText: root.indicatorText
        stalled: root.stalled
        errorText: root.errorText
        toolLines: root.toolLines
        toolStates: root.toolStates
        sources: root.sources
        canContinue: root.canContinue
        place: root.place
        proofMark: root.proofMark
        isLast: root.isLast
        responding: root.responding
        canRead: root.canRead
        reading: root.reading
        version: root.version
        versionCount: root.versionCount
        wideColumn: Math.max(root.column, Math.min(Theme.wideColumnWidth, root.width - 2 * Theme.gap24))
        onCopyAsked: text => root.copyAsked(text)
        onLinkAsked: address => root.linkAsked(address)
        onReadAsked: root.readAsked()
        onProofAsked: root.proofAsked()
        onContinueAsked: root.continueAsked(root.messageId)
        onRetryAsked: root.retryAsked()
        onStopAsked: root.stopAsked()
        onRegenerateAsked: root.regenerateAsked()
        onVersionAsked: distance => root.versionAsked(distance)
    }
}
