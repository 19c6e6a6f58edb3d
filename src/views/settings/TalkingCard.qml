import QtQuick
import Morvane
import Morvane.ViewModels

// How the person talks to the composer.
SettingsCard {
    id: root

    required property SettingsStore settings
    required property GlobalShortcutViewModel talkKey

    heading: qsTr("Talking")

    KeyboardRow {
        objectName: "voice.key"
        key: root.talkKey
        title: qsTr("Key to hold")
        purpose: qsTr("Speak after the pop, and let go. The words come into the message; Esc drops them.")
    }
    SwitchRow {
        objectName: "voice.send"
        title: qsTr("Send at once")
        explanation: qsTr("Otherwise the words wait in the message until it is sent.")
        checked: root.settings.autoSendTranscription
        onToggled: on => root.settings.autoSendTranscription = on
    }
}
