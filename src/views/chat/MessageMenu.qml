import QtQuick
import Morvane
import Morvane.ViewModels

// What can be done with a message, with the block of it that is meant, and with what is selected.
PopupMenu {
    id: root

    required property MenuKeeper keeper
    required property ChatSelection selection
    required property ChatViewModel chat
    required property ShellViewModel shell
    readonly property MessageRow row: keeper.row as MessageRow
    readonly property var block: keeper.block
    readonly property var table: block?.content?.table // of a block that is one
    readonly property bool isCode: block?.content?.code !== undefined
    readonly property bool isReply: row ? !row.isUser : false
    readonly property bool idle: row ? !row.responding : false
    property string selected // while it is open
    readonly property string meant: selected.length > 0 ? selected
        : isCode || table !== undefined ? block.plainText
        : root.chat.messages.plainText(row?.messageId ?? "")

    function quote(words: string) {
        root.chat.quote(words);
    }
    function selectMore(row: Item) {
        root.selection.selectMore(row);
    }

    objectName: "messageMenu"
    implicitWidth: 220 * Theme.zoom
    onAboutToShow: selected = selection.textIn(row)
    onClosed: keeper.giveBack()

    PopupMenuItem {
        text: root.selected.length > 0 ? qsTr("Copy") : root.table !== undefined ? qsTr("Copy Table")
            : root.isCode ? qsTr("Copy Code") : root.isReply ? qsTr("Copy Reply") : qsTr("Copy Message")
        enabled: root.meant.length > 0
        onTriggered: root.shell.copy(root.meant)
    }
    PopupMenuItem {
        text: qsTr("Copy Link")
        offered: root.keeper.link.length > 0
        onTriggered: root.shell.copy(root.keeper.link)
    }
    PopupMenuItem {
        text: root.table !== undefined ? qsTr("Copy Table as Markdown") : qsTr("Copy as Markdown")
        offered: root.isReply
        onTriggered: root.shell.copy(root.table !== undefined ? root.table.markdown
            : root.selection.markdownIn(root.row))
    }
    PopupMenuItem {
        text: qsTr("Select All")
        onTriggered: Qt.callLater(root.selectMore, root.row) // qmllint disable
    }
    PopupMenuItem {
        text: qsTr("Quote in Reply")
        enabled: root.meant.length > 0
        onTriggered: Qt.callLater(root.quote, root.meant) // qmllint disable
    }
    PopupMenuItem {
        text: qsTr("Reply Again")
        offered: root.isReply && root.row.canRegenerate
        onTriggered: root.chat.regenerate()
    }
    PopupMenuItem {
        text: qsTr("Edit and Send Again")
        offered: !root.isReply && (root.row?.isLastQuestion ?? false)
        enabled: root.idle
        onTriggered: Qt.callLater(root.row.editAsked) // qmllint disable
    }
    PopupMenuItem {
        text: qsTr("Delete with Its Reply")
        offered: !root.isReply
        enabled: root.idle
        dangerous: true
        onTriggered: Qt.callLater(root.row.deleteAsked) // qmllint disable
    }
}
