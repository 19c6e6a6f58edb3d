import QtQuick
import Morvane
import Morvane.ViewModels

// While the composer holds the person's last message: what sending it does, and the way out.
NoticeBar {
    id: root

    required property ChatViewModel chat

    glyph: "quill"
    words: qsTr("Editing your message. Sending it asks again; the former one is kept with its reply.")

    PushButton {
        objectName: "cancelEdit"
        text: qsTr("Cancel")
        onClicked: root.chat.cancelEdit()
    }
}
