import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A reply: what the tools did, the words, how it ended, and the row of things to do with it.
ColumnLayout {
    id: root

    required property MessageListModel messages
    required property string messageId
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
    required property bool canContinue
    required property string place
    required property string proofMark
    required property bool isLast
    required property bool responding // a turn runs in this chat
    required property int version
    required property int versionCount
    property bool canRead: false
    property bool reading: false // aloud, now
    property real wideColumn: width
    readonly property string mark: cancelled ? qsTr("You stopped this reply.")
        : interrupted ? qsTr("This reply was interrupted.")
        : !running && !failed && text.length === 0 && thinking.length > 0
            ? qsTr("The model thought, but gave no answer.")
        : !failed || errorText.length > 0 ? ""
        : text.length + thinking.length > 0 ? qsTr("This reply was cut short.") : qsTr("No reply came.")

    signal reused() // for another message

    onReused: blocks.startOver()
    signal copyAsked(string text)
    signal readAsked()
    signal linkAsked(string address)
    signal proofAsked()
    signal continueAsked()
    signal retryAsked()
    signal stopAsked()
    signal regenerateAsked()
    signal versionAsked(int distance)

    spacing: Theme.gap12

    HoverHandler { id: hover }

    ToolLines {
        Layout.fillWidth: true
        Layout.maximumWidth: root.width // what it shows is as wide as it, and would keep it so
        Layout.topMargin: Theme.gap12
        visible: lines.length > 0
        messages: root.messages
        messageId: root.messageId
        lines: root.toolLines
        outcomes: root.toolStates
        running: root.running
    }
    Later {
        Layout.fillWidth: true
        Layout.topMargin: root.toolLines.length > 0 ? 0 : Theme.gap8
        visible: wanted
        part: "chat/ThoughtFold.qml"
        given: ({ reply: root })
        wanted: root.thinking.length > 0
    }
    ReplyBlocks {
        id: blocks

        column: root.width
        wideColumn: root.wideColumn
        Layout.topMargin: root.toolLines.length > 0 || root.thinking.length > 0 ? 0 : Theme.gap12
        visible: root.text.length > 0
        text: root.text
        finished: !root.running
        onLinkAsked: address => root.linkAsked(address)
        onCopyAsked: text => root.copyAsked(text)
    }
    ReplyIndicator {
        objectName: "replyIndicator"
        Layout.topMargin: root.text.length > 0 || root.toolLines.length > 0 ? 0 : Theme.gap12
        visible: root.running && (root.text.length === 0 || root.indicatorText.length > 0)
        words: root.indicatorText
        stalled: root.stalled
        onStopAsked: root.stopAsked()
    }
    EndMark {
        Layout.fillWidth: true
        visible: root.failed && text.length > 0
        glyph: "warning"
        ink: Theme.danger
        text: root.errorText
    }
    EndMark {
        Layout.fillWidth: true
        visible: text.length > 0
        glyph: root.cancelled ? "stop" : "warning"
        ink: Theme.secondary
        text: root.mark
    }
    SourceChips {
        Layout.fillWidth: true
        visible: domains.length > 0
        domains: root.sources
    }
    ReplyActions {
        Layout.fillWidth: true
        Layout.maximumWidth: root.width // or it keeps the width that a wider window gave it
        place: root.place
        proofMark: root.proofMark
        finished: !root.running
        hasText: root.text.length > 0
        canContinue: root.canContinue
        canRetry: (root.interrupted || root.failed) && root.isLast
        canRegenerate: root.isLast && !root.responding && !root.running && !root.failed && !root.interrupted
        version: root.version
        versionCount: root.versionCount
        canSwitch: !root.responding
        canRead: root.canRead
        reading: root.reading
        emphasised: root.isLast || hover.hovered
        onCopyAsked: root.copyAsked(root.messages.plainText(root.messageId))
        onReadAsked: root.readAsked()
        onProofAsked: root.proofAsked()
        onContinueAsked: root.continueAsked()
        onRetryAsked: root.retryAsked()
        onRegenerateAsked: root.regenerateAsked()
        onVersionAsked: distance => root.versionAsked(distance)
    }
}
