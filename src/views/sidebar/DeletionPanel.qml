import QtQuick
import Morvane
import Morvane.ViewModels

// Asks before a chat is gone.
ConfirmPanel {
    id: root

    required property ChatViewModel chat
    property string conversationId

    function ask(id: string, title: string) {
        root.conversationId = id;
        root.title = qsTr("Delete “%1”?").arg(title);
        root.open();
    }

    explanation: qsTr("The chat and its messages are removed from this computer. This can't be undone.")
    remedy: qsTr("Delete")
    onConfirmed: root.chat.remove(conversationId)
}
