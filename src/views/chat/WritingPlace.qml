pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Below what was said: what needs an answer, and the place to write.
ColumnLayout {
    id: root

    required property ChatViewModel chat
    required property ShellViewModel shell
    required property SourceMenuViewModel sources
    required property ReceiptsModel receipts
    readonly property Composer composer: field

    signal settingsChosen()

    spacing: Theme.gap8

    Notice {
        part: "chat/ErrorNotice.qml"
        given: ({ chat: root.chat, shell: root.shell })
        wanted: root.chat.hasBanner
    }
    Repeater {
        model: root.receipts

        UndoBar {
            Layout.fillWidth: true
            onUndoChosen: id => root.receipts.undo(id)
            onDismissed: id => root.receipts.dismiss(id)
        }
    }
    Notice {
        part: "chat/DeletedNotice.qml"
        given: ({ chat: root.chat })
        wanted: root.chat.deletedCount > 0
    }
    Notice {
        part: "chat/EditNotice.qml"
        given: ({ chat: root.chat })
        wanted: root.chat.isEditing
    }
    Notice {
        part: "chat/ApprovalCard.qml"
        given: ({ chat: root.chat, composer: field })
        wanted: root.chat.hasApproval
    }
    Composer {
        id: field

        Layout.fillWidth: true
        chat: root.chat
        sources: root.sources
        draft: root.chat.draft
        ghost: root.chat.ghosts.isOn
        canSend: root.chat.canSend
        responding: root.chat.isResponding
        onDraftEdited: text => root.chat.draft = text
        onTyped: root.chat.noteTyping()
        onSendChosen: root.chat.send()
        onStopChosen: root.chat.stopResponding()
        onSettingsChosen: root.settingsChosen()
    }
    SourceLine {
        Layout.fillWidth: true
        destination: root.sources.destination
        warning: root.sources.warning
    }
    CaptionText {
        objectName: "modelNotice"
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.chat.entries.modelNotice
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
