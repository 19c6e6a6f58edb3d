import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What is left to whoever has forgotten the passphrase.
SettingsPage {
    id: root

    required property PrivacyViewModel privacy

    signal returned()

    title: qsTr("Without your passphrase")
    Keys.onEscapePressed: root.returned()
    Component.onCompleted: back.forceActiveFocus(Qt.TabFocusReason)

    SmallText {
        Layout.fillWidth: true
        color: Theme.text
        text: qsTr("Nothing can open your chats without it. It is stored nowhere, and nobody can reset it, this program and its makers included. Your chats stay as they are for the day that you remember it, or you delete everything and begin anew.")
    }
    PushButton {
        id: back

        objectName: "backToLock"
        text: qsTr("Back")
        onClicked: root.returned()
    }
    EraseCard {
        privacy: root.privacy
        onAskingChanged: root.followsEnd = asking
    }
}
