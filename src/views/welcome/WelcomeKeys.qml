pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Third step: the keys that are worth knowing, and who the ghost is.
ColumnLayout {
    id: root

    required property CompanionViewModel companion
    readonly property var rows: [
        { keys: "Return", action: qsTr("Send the message") },
        { keys: Keymap.talk, action: qsTr("Hold to talk") },
        { keys: "Esc", action: qsTr("Stop the reply") },
        { keys: Keymap.newChat, action: qsTr("New chat") },
        { keys: Keymap.search, action: qsTr("Search the chats") },
        { keys: Keymap.settings, action: qsTr("Settings") },
        { keys: Keymap.sheet, action: qsTr("All the keys") }
    ]

    spacing: Theme.gap12

    WelcomeHeading {
        text: qsTr("A few keys, and the ghost")
        explanation: qsTr("Everything can be done without the pointer.")
    }
    SettingsCard {
        Repeater {
            model: root.rows.filter(row => row.keys.length > 0)

            delegate: RowLayout {
                id: row

                required property var modelData

                Layout.fillWidth: true
                Layout.preferredHeight: Theme.rowHeight

                Accessible.role: Accessible.StaticText
                Accessible.name: row.modelData.keys + ": " + row.modelData.action

                SmallText {
                    Layout.fillWidth: true
                    text: row.modelData.action
                    color: Theme.text
                    Accessible.ignored: true
                }
                KeyCap { text: row.modelData.keys }
            }
        }
    }
    RowLayout {
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap12
        spacing: Theme.gap24

        Ghost {
            Layout.leftMargin: Theme.gap16
            size: 96 * Theme.zoom
            companion: root.companion
        }
        ColumnLayout {
            spacing: Theme.gap4

            PlainText {
                Layout.fillWidth: true
                text: qsTr("This is the ghost.")
                font.weight: Font.DemiBold
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            SmallText {
                Layout.fillWidth: true
                text: qsTr("It sits below the list of chats and shows what is going on: whether a reply is on its way, has come or went wrong. It moves only then, and keeps still when you ask for less motion.")
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}
