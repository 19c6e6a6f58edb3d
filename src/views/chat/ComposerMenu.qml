import QtQuick
import Morvane
import Morvane.ViewModels

// The ways into the composer beside typing, and what can be asked of what is in it.
PopupMenu {
    id: root

    required property ChatViewModel chat
    property bool canPaste: false // while it is open

    signal filesAsked()

    objectName: "composerMenu"
    implicitWidth: 210 * Theme.zoom
    onAboutToShow: canPaste = chat.entries.attachments.canPaste()

    PopupMenuItem {
        text: qsTr("Attach Files…")
        onTriggered: Qt.callLater(root.filesAsked) // qmllint disable
    }
    PopupMenuItem {
        text: qsTr("Paste as Attachment")
        offered: root.canPaste
        onTriggered: root.chat.entries.attachments.paste()
    }
    PopupMenuItem {
        objectName: "askAboutClipboard"
        text: qsTr("Ask About Clipboard")
        onTriggered: root.chat.entries.attachments.askAboutClipboard()
    }
    PopupMenuItem {
        objectName: "lookAtScreen"
        text: qsTr("Look at My Screen")
        offered: root.chat.entries.offersScreen
        enabled: !root.chat.isResponding
        onTriggered: root.chat.entries.glanceAtScreen(false)
    }
    PopupMenuItem {
        text: qsTr("Summarize My Screen")
        offered: root.chat.entries.offersScreen
        enabled: !root.chat.isResponding
        onTriggered: root.chat.entries.glanceAtScreen(true)
    }
    MenuLine {}
    QuickActionItems {
        menu: root
        chat: root.chat
    }
}
