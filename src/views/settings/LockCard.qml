pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Who may open the chats, and when they close by themselves.
SettingsCard {
    id: root

    required property AppLockViewModel lock
    required property SettingsStore settings
    required property string productName

    keywords: qsTr("password fingerprint")
    heading: qsTr("Lock")

    SwitchRow {
        objectName: "appLock"
        title: qsTr("Lock %1").arg(root.productName)
        explanation: qsTr("Your chats open only after your password or fingerprint.")
        checked: root.lock.asksPresence
        enabled: !root.lock.isChanging
        onToggled: on => root.lock.setEnabled(on)
    }
    SmallText {
        objectName: "setUpMessage"
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.gap8
        visible: text.length > 0
        color: Theme.warning
        text: root.lock.setUpMessage
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    PassphraseSetting {
        lock: root.lock
    }
    SettingsRow {
        title: qsTr("Lock when idle")
        explanation: root.lock.tellsIdleTime ? qsTr("After no key and no move of the pointer.")
            : qsTr("This desktop doesn't tell programs when nobody types, so no time can be up here.")
        visible: root.lock.isEnabled

        Repeater {
            model: [
                { minutes: 0, words: qsTr("Never") },
                { minutes: 1, words: qsTr("1 minute") },
                { minutes: 5, words: qsTr("5 minutes") },
                { minutes: 15, words: qsTr("15 minutes") },
                { minutes: 60, words: qsTr("1 hour") }
            ]

            ChoiceButton {
                required property var modelData

                objectName: "idle." + modelData.minutes
                text: modelData.words
                checked: root.settings.appLockIdleMinutes === modelData.minutes
                onClicked: root.settings.appLockIdleMinutes = modelData.minutes
            }
        }
    }
    SmallText {
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.gap8
        visible: root.lock.isEnabled
        text: qsTr("It also locks with the screen, the screen saver, sleep and a change of user, as far as your desktop tells of them, and with %1. A reply that is being written ends there and keeps what has come.").arg(Keymap.lock)
    }
    PushButton {
        objectName: "lockNow"
        Layout.bottomMargin: Theme.gap8
        visible: root.lock.isEnabled
        text: qsTr("Lock Now")
        onClicked: root.lock.lock()
    }
}
