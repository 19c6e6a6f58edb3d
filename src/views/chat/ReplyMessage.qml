pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane

// A reply: what the tools did, the words, how it ended, and the row of things to do with it.
ColumnLayout {
    id: root

    required property MessageRow row
    readonly property string mark: row.cancelled ? qsTr("You stopped this reply.")
        : row.interrupted ? qsTr("This reply was interrupted.") : ""

    signal copyAsked()
    signal continueAsked()

    spacing: Theme.gap12

    HoverHandler { id: hover }

    ToolLines {
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap12
        visible: lines.length > 0
        lines: root.row.toolLines
        running: root.row.running
    }
    SelectableText {
        id: words

        Layout.fillWidth: true
        Layout.topMargin: root.row.toolLines.length > 0 ? 0 : Theme.gap12
        visible: root.row.text.length > 0
        shownText: root.row.text

        FocusRing {
            anchors.margins: -Theme.gap8
            visible: words.activeFocus
        }
    }
    Loader {
        Layout.topMargin: root.row.text.length > 0 || root.row.toolLines.length > 0 ? 0 : Theme.gap12
        active: root.row.running && (root.row.text.length === 0 || root.row.indicatorText.length > 0)
        visible: active
        sourceComponent: ReplyIndicator { words: root.row.indicatorText }
    }
    EndMark {
        Layout.fillWidth: true
        visible: root.row.failed && text.length > 0
        glyph: "warning"
        ink: Theme.danger
        text: root.row.errorText
    }
    EndMark {
        Layout.fillWidth: true
        visible: text.length > 0
        glyph: root.row.cancelled ? "stop" : "warning"
        ink: Theme.secondary
        text: root.mark
    }
    SourceChips {
        Layout.fillWidth: true
        visible: domains.length > 0
        domains: root.row.sources
    }
    ReplyActions {
        Layout.fillWidth: true
        place: root.row.place
        finished: !root.row.running
        hasText: root.row.text.length > 0
        canContinue: root.row.canContinue
        emphasised: root.row.isLast || hover.hovered || words.activeFocus
        onCopyAsked: root.copyAsked()
        onContinueAsked: root.continueAsked()
    }
}
