import QtQuick
import Morvane
import Morvane.ViewModels

// Privacy while it is locked: nothing here lets anybody in, weakens the lock or deletes anything.
SettingsPage {
    id: root

    required property PrivacyViewModel privacy
    required property AboutViewModel about
    required property ShellViewModel shell

    signal unlockChosen()

    title: qsTr("Privacy")

    SettingsCard {
        heading: qsTr("Lock")

        SettingsRow {
            title: qsTr("It is locked")
            explanation: qsTr("The lock, the passphrase, how long chats are kept, identifiers and deleting everything wait until you unlock.")

            PushButton {
                objectName: "toUnlock"
                text: qsTr("Go to Unlock")
                onClicked: root.unlockChosen()
            }
        }
    }
    PlacesCard {
        privacy: root.privacy
        shell: root.shell
    }
    ProtectionCard { about: root.about }
}
