import QtQuick
import Morvane
import Morvane.ViewModels

// What to attach files by, to talk by and to show the screen by, and the menu of all other ways into the composer.
Row {
    id: root

    required property ChatViewModel chat
    readonly property bool focused: clip.activeFocus || talk.activeFocus || screen.activeFocus || more.activeFocus

    function askForFiles() {
        dialog.setSource("AttachDialog.qml");
    }
    function openMenu() {
        menu.wanted = true;
        const entries = menu.item as ComposerMenu;
        entries.popup(more, 0, -entries.height - Theme.gap4);
    }

    IconButton {
        id: clip

        objectName: "attachFiles"
        text: qsTr("Attach files")
        glyph: "paperclip"
        onClicked: root.askForFiles()
    }
    VoiceButton {
        id: talk

        voice: root.chat.entries.voice
    }
    IconButton {
        id: screen

        objectName: "screen"
        visible: root.chat.entries.offersScreen
        enabled: !root.chat.isResponding
        text: qsTr("Look at my screen")
        glyph: "screen"
        onClicked: root.chat.entries.glanceAtScreen(false)
    }
    IconButton {
        id: more

        objectName: "composerActions"
        text: qsTr("More to ask with")
        glyph: "spark"
        quiet: (menu.item as ComposerMenu)?.visible ?? false
        onClicked: root.openMenu()
    }
    Later {
        id: menu

        part: "chat/ComposerMenu.qml"
        given: ({ chat: root.chat })
        onLoaded: (item as ComposerMenu).filesAsked.connect(root.askForFiles)
    }
    // The file dialog brings half a toolkit along, so it comes only when it is asked for.
    Loader {
        id: dialog

        onLoaded: {
            const files = item as AttachDialog;
            files.chosen.connect(urls => root.chat.entries.attachments.attach(urls));
            files.finished.connect(() => dialog.source = "");
            files.open();
        }
    }
}
