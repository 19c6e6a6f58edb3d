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
    PlacesCard {
        privacy: root.privacy
        shell: root.shell
    }
    ProtectionCard { about: root.about }
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
