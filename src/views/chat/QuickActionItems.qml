pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QtQml.Models
import Morvane
import Morvane.ViewModels

// The entries of a menu that ask something of what is attached or written, at its end.
Instantiator {
    id: root

    required property T.Menu menu
    required property ChatViewModel chat

    model: chat.entries.quickActions
    delegate: PopupMenuItem {
        required property int index
        required property string modelData

        objectName: "quickAction"
        text: modelData
        enabled: root.chat.canSend && !root.chat.isEditing
        onTriggered: root.chat.perform(index)
    }
    onObjectAdded: (_, item) => root.menu.addItem(item as Item)
    onObjectRemoved: (_, item) => root.menu.removeItem(item as Item)
}
