import QtQuick
import Morvane
import Morvane.ViewModels

// The keys that work wherever the keyboard is.
SettingsPage {
    id: root

    required property GlobalShortcutViewModel chatKey
    required property GlobalShortcutViewModel talkKey

    title: qsTr("Keyboard")

    SettingsCard {
        heading: qsTr("In any program")

        KeyboardRow {
            objectName: "keyboard.chat"
            key: root.chatKey
            title: qsTr("Show the window")
            purpose: qsTr("Brings it to the front.")
        }
        KeyboardRow {
            objectName: "keyboard.talk"
            key: root.talkKey
            title: qsTr("Hold to talk")
            purpose: qsTr("Brings it to the front and listens until you let go.")
        }
    }
    SmallText {
        width: parent.width
        text: qsTr("%1 in the main window lists all its keys.").arg(Keymap.sheet)
    }
}
