pragma ComponentBehavior: Bound

import QtQuick
import QtQml.Models
import Morvane
import Morvane.ViewModels

// How the person talks to the composer.
SettingsCard {
    id: root

    required property SettingsStore settings
    readonly property list<string> presets: ["optionV", "optionC", "optionSpace", "controlSpace", "commandShiftSpace",
        "functionF13", "disabled"]

    function keysOf(preset: string): string {
        return Keymap.talkKeys[preset].length > 0 ? Keymap.talkKeys[preset] : qsTr("None");
    }

    heading: qsTr("Talking")

    SettingsRow {
        title: qsTr("Key to hold")
        explanation: qsTr("Speak after the pop, and let go. The words come into the message; Esc drops them.")

        PushButton {
            id: choice

            objectName: "voice.key"
            text: root.keysOf(root.settings.pushToTalkShortcut)
            Accessible.name: qsTr("Key to hold: %1").arg(text)
            onClicked: menu.popup(choice, 0, choice.height + Theme.gap4)

            PopupMenu {
                id: menu

                objectName: "voice.keys"

                Instantiator {
                    model: root.presets
                    onObjectAdded: (index, item) => menu.insertItem(index, item as Item)
                    onObjectRemoved: (_, item) => menu.removeItem(item as Item)

                    PopupMenuItem {
                        required property string modelData

                        text: root.keysOf(modelData)
                        onTriggered: root.settings.pushToTalkShortcut = modelData
                    }
                }
            }
        }
    }
    SwitchRow {
        objectName: "voice.send"
        title: qsTr("Send at once")
        explanation: qsTr("Otherwise the words wait in the message until it is sent.")
        checked: root.settings.autoSendTranscription
        onToggled: on => root.settings.autoSendTranscription = on
    }
}
