import QtQuick
import Morvane

// One row of the list: what the person said, or the reply. It holds the drawing of both, so that a row that is
// reused for the other kind builds nothing.
Item {
    id: root

    required property int index
    required property string messageId
    required property bool isUser
    required property string text
    required property bool failed
    required property bool cancelled
    required property bool interrupted
    required property bool running
    required property string indicatorText
    required property string errorText
    required property list<string> toolLines
    required property list<string> sources
    required property string attachmentName
    required property bool canContinue
    required property string place
    property real column: Theme.columnWidth
    property bool isLast: false

    signal copyAsked(string text)
    signal linkAsked(string address)
    signal continueAsked(string messageId)

    implicitHeight: isUser ? question.implicitHeight : answer.implicitHeight

    UserMessage {
        id: question

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.column
        visible: root.isUser
        text: root.isUser ? root.text : ""
        attachmentName: root.attachmentName
    }
    ReplyMessage {
        id: answer

        anchors.horizontalCenter: parent.horizontalCenter
        width: root.column
        visible: !root.isUser
        text: root.isUser ? "" : root.text
        failed: root.failed
        cancelled: root.cancelled
        interrupted: root.interrupted
        running: root.running
        indicatorText: root.indicatorText
        errorText: root.errorText
        toolLines: root.toolLines
        sources: root.sources
        canContinue: root.canContinue
        place: root.place
        isLast: root.isLast
        onCopyAsked: text => root.copyAsked(text)
        onLinkAsked: address => root.linkAsked(address)
        onContinueAsked: root.continueAsked(root.messageId)
    }
}
