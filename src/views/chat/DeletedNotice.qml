import QtQuick
import Morvane
import Morvane.ViewModels

// That messages were just deleted, and the way to take that back.
NoticeBar {
    id: root

    required property ChatViewModel chat

    glyph: "trash"
    words: chat.deletedCount > 1 ? qsTr("Message deleted with its reply.") : qsTr("Message deleted.")

    PushButton {
        objectName: "undoDelete"
        text: qsTr("Undo")
        onClicked: root.chat.undoDelete()
    }
    IconButton {
        objectName: "forgetDeleted"
        text: qsTr("Close this")
        glyph: "close"
        onClicked: root.chat.forgetDeleted()
    }
}
