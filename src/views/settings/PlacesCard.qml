pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// Where on this computer everything is kept.
SettingsCard {
    id: root

    required property PrivacyViewModel privacy
    required property ShellViewModel shell

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
