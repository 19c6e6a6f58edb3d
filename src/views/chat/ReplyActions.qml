import QtQuick
import QtQuick.Layouts
import Morvane

// The row under a reply: where it ran and what proves it, copy, read aloud, another version, Continue when its limit
// cut it off, and Retry when it failed or the program ended before it did.
RowLayout {
    id: root

    property string place
    property string proofMark
    property bool finished: false
    property bool hasText: false
    property bool canContinue: false
    property bool canRetry: false
    property bool canRegenerate: false
    property int version: 1
    property int versionCount: 1
    property bool canSwitch: false
    property bool canRead: false // aloud
    property bool reading: false
    property bool emphasised: false
    readonly property real high: 28 * Math.max(Theme.zoom, Theme.textScale)
    readonly property bool seen: emphasised || line.activeFocus || again.activeFocus || copyButton.activeFocus
        || aloud.activeFocus

    signal copyAsked()
    signal readAsked()
    signal proofAsked()
    signal continueAsked()
    signal retryAsked()
    signal regenerateAsked()
    signal versionAsked(int distance)

    spacing: Theme.gap8

    ProofLine {
        id: line

        Layout.fillWidth: true
        Layout.maximumWidth: implicitWidth
        visible: root.place.length > 0 && (root.finished || root.proofMark !== "place")
        text: root.place
        mark: root.proofMark
        onClicked: root.proofAsked()
    }
    VersionSwitch {
        visible: root.versionCount > 1 && root.canSwitch
        version: root.version
        count: root.versionCount
        onStepped: distance => root.versionAsked(distance)
    }
    IconButton {
        id: copyButton

        objectName: "copyReply"
        Layout.leftMargin: root.place.length > 0 ? 0 : -5
        size: 28 * Theme.zoom
        visible: root.finished && root.hasText
        opacity: root.seen || copied.running ? 1 : 0
        text: copied.running ? qsTr("Copied") : qsTr("Copy the reply")
        glyph: copied.running ? "check" : "copy"
        onClicked: {
            root.copyAsked();
            copied.restart();
        }

        Behavior on opacity { Motion { duration: Theme.fade } }
        Timer {
            id: copied

            interval: 2000
        }
    }
    CaptionText {
        visible: copied.running
        text: qsTr("Copied")
        color: Theme.success
    }
    IconButton {
        id: aloud

        objectName: "readAloud"
        Layout.leftMargin: -Theme.gap8
        size: 28 * Theme.zoom
        visible: root.canRead && root.finished && root.hasText
        opacity: root.seen || root.reading ? 1 : 0
        text: root.reading ? qsTr("Stop reading") : qsTr("Read the reply aloud")
        glyph: root.reading ? "stop" : "speaker"
        onClicked: root.readAsked()

        Behavior on opacity { Motion { duration: Theme.fade } }
    }
    IconButton {
        id: again

        objectName: "regenerate"
        Layout.leftMargin: -Theme.gap8
        size: 28 * Theme.zoom
        visible: root.canRegenerate
        text: qsTr("Reply again")
        glyph: "retry"
        onClicked: root.regenerateAsked()
    }
    Item { Layout.fillWidth: true }
    PushButton {
        objectName: "continueReply"
        Layout.preferredHeight: root.high
        visible: root.canContinue && root.finished
        text: qsTr("Continue")
        onClicked: root.continueAsked()
    }
    PushButton {
        objectName: "retryReply"
        Layout.preferredHeight: root.high
        visible: root.canRetry
        text: qsTr("Retry")
        onClicked: root.retryAsked()
    }
}
