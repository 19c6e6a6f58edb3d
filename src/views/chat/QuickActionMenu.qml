import QtQuick
import Morvane
import Morvane.ViewModels

// What can be asked without writing a word: of what is attached, or else of the draft.
PopupMenu {
    id: root

    required property ChatViewModel chat

    objectName: "quickActionMenu"

    QuickActionItems {
        menu: root
        chat: root.chat
    }
}
