pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// Who may open the chats, how long they stay, where everything is kept, and how to be rid of it.
SettingsPage {
    id: root

    required property AppLockViewModel lock
    required property PrivacyViewModel privacy
    required property AboutViewModel about
    required property SettingsStore settings
    required property ShellViewModel shell

    title: qsTr("Privacy")

    LockCard {
        lock: root.lock
        settings: root.settings
        productName: root.shell.productName
    }
    RetentionCard {
        settings: root.settings
        productName: root.shell.productName
    }
    SettingsCard {
        heading: qsTr("What is kept where")

        Repeater {
            model: root.privacy.places.length / 2

            SettingsRow {
                required property int index

                title: root.privacy.places[2 * index]
                explanation: root.privacy.places[2 * index + 1]
            }
        }
        SettingsRow {
            title: qsTr("The key that opens them")
            explanation: root.shell.keychainNotice.length > 0 ? root.shell.keychainNotice : root.privacy.keyPlace
        }
    }
    SettingsCard {
        heading: qsTr("What this protects")

        SettingsRow {
            title: qsTr("Against whom, and what stays open")
            explanation: qsTr("What a hardware proof, the lock and the sealing do, and what they can't.")

            PushButton {
                objectName: "readThreatModel"
                text: qsTr("Read")
                onClicked: root.about.readThreatModel()
            }
        }
    }
    SettingsCard {
        heading: qsTr("What services know")

        SettingsRow {
            title: qsTr("Identifiers of this install")
            explanation: root.privacy.identifiersNote.length > 0 ? root.privacy.identifiersNote
                : qsTr("Each online service of %1 knows this install by a random number of its own, and by nothing else.").arg(root.shell.productName)

            PushButton {
                objectName: "replaceIdentifiers"
                text: qsTr("Replace Identifiers")
                onClicked: root.privacy.replaceIdentifiers()
            }
        }
    }
    EraseCard {
        privacy: root.privacy
        onAskingChanged: root.followsEnd = asking
    }
}
