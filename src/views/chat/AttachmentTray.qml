import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The part of the composer that holds what is attached, and what the person should know of it.
ColumnLayout {
    id: root

    required property ChatViewModel chat
    readonly property AttachmentDesk desk: chat.entries.attachments

    spacing: Theme.gap4

    AttachmentChip {
        Layout.maximumWidth: Math.min(280 * Theme.zoom, root.width)
        desk: root.desk
        menuOpen: (actions.item as QuickActionMenu)?.visible ?? false
        canAct: root.chat.canSend && !root.chat.isEditing
        onTextAsked: {
            words.wanted = true;
            (words.item as AttachmentText).open();
        }
        onActionsAsked: place => {
            actions.wanted = true;
            (actions.item as QuickActionMenu).popup(place, 0, -(actions.item as QuickActionMenu).height);
        }
    }
    CaptionText {
        objectName: "attachmentNotice"
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.desk.notice
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    Later {
        id: actions

        part: "chat/QuickActionMenu.qml"
        given: ({ chat: root.chat })
    }
    Later {
        id: words

        part: "chat/AttachmentText.qml"
        given: ({ desk: root.desk })
    }
}
