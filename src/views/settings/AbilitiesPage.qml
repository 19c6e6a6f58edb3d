pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// What the model may do besides answering.
SettingsPage {
    id: root

    required property AbilitiesViewModel abilities
    required property SettingsStore settings
    required property SearchKeyViewModel searchKey
    required property CalendarsViewModel calendars
    required property ShortcutListModel shortcuts
    required property ShellViewModel shell
    required property ScreenTestViewModel screenTest
    property bool shown: false

    title: qsTr("Abilities")
    onShownChanged: if (root.shown) root.shortcuts.refresh()

    SettingsCard {
        SwitchRow {
            objectName: "abilities.enabled"
            title: qsTr("Abilities")
            explanation: qsTr("Lets the model look things up and act for you, each in its own way and never behind your back.")
            checked: root.settings.abilitiesEnabled
            onToggled: on => root.settings.abilitiesEnabled = on
        }
        SwitchRow {
            objectName: "abilities.memory"
            title: qsTr("Memory")
            explanation: qsTr("Keeps short notes about you between chats, sealed on this computer.")
            enabled: root.settings.abilitiesEnabled
            checked: root.settings.memoryEnabled
            onToggled: on => root.settings.memoryEnabled = on
        }
        SwitchRow {
            objectName: "abilities.web"
            title: qsTr("Web access")
            explanation: qsTr("Searches the web, after asking you, and reads pages.")
            enabled: root.settings.abilitiesEnabled
            checked: root.settings.webAccessEnabled
            onToggled: on => root.settings.webAccessEnabled = on
        }
        SwitchRow {
            objectName: "abilities.screen"
            title: qsTr("Screen awareness")
            explanation: qsTr("Reads the text on your screen when you ask about it.")
            enabled: root.settings.abilitiesEnabled
            checked: root.settings.screenAwarenessEnabled
            onToggled: on => root.settings.screenAwarenessEnabled = on
        }
        SettingsRow {
            title: qsTr("Test screen reading")
            visible: root.screenTest.isOffered
            explanation: root.screenTest.isTesting ? qsTr("Looking…") : root.screenTest.message.length > 0
                ? root.screenTest.message : qsTr("Looks at your screen once and counts the words. Nothing is kept or sent.")
            explanationInk: root.screenTest.message.length === 0 ? Theme.secondary
                : root.screenTest.worked ? Theme.success : Theme.danger
            Accessible.role: Accessible.StatusBar
            Accessible.name: explanation

            PushButton {
                objectName: "testScreen"
                text: root.screenTest.isTesting ? qsTr("Cancel") : qsTr("Test")
                onClicked: root.screenTest.test()
            }
        }
        SwitchRow {
            objectName: "abilities.desktop"
            title: qsTr("Desktop actions")
            explanation: qsTr("Opens links, adds events and runs your shortcuts, each only after you say yes.")
            enabled: root.settings.abilitiesEnabled
            checked: root.settings.desktopActionsEnabled
            onToggled: on => root.settings.desktopActionsEnabled = on
        }
    }
    SettingsCard {
        heading: qsTr("Web search")

        KeyRow {
            title: qsTr("Search key")
            purpose: qsTr("Your own key for Brave Search.")
            hasKey: root.searchKey.hasKey
            notice: root.shell.keychainNotice
            onSaveChosen: key => root.searchKey.save(key)
            onRemoveChosen: root.searchKey.save("")
        }
        SettingsRow {
            title: qsTr("Test")
            visible: root.searchKey.hasKey || root.searchKey.message.length > 0
            explanation: root.searchKey.isTesting ? qsTr("Searching…")
                : root.searchKey.message.length > 0 ? root.searchKey.message : qsTr("Searches the web once, for the word “test”.")
            explanationInk: root.searchKey.message.length === 0 || root.searchKey.isTesting ? Theme.secondary
                : root.searchKey.worked ? Theme.success : Theme.danger
            Accessible.role: Accessible.StatusBar
            Accessible.name: explanation

            PushButton {
                objectName: "testSearchKey"
                enabled: root.searchKey.hasKey
                text: root.searchKey.isTesting ? qsTr("Cancel") : qsTr("Test")
                onClicked: root.searchKey.isTesting ? root.searchKey.cancelTest() : root.searchKey.test()
            }
        }
    }
    CalendarCard { calendars: root.calendars }
    ShortcutsCard {
        shortcuts: root.shortcuts
        onCopyAsked: text => root.shell.copy(text)
    }
    SettingsCard {
        heading: qsTr("What each one does")

        Repeater {
            model: root.abilities

            AbilityRow {}
        }
    }
}
