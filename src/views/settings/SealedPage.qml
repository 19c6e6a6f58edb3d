import QtQuick
import QtQuick.Layouts
import Morvane

// Stands for a page that shows or takes what is sealed, or what only the person may read, while it is locked.
SettingsPage {
    id: root

    required property string reason

    signal unlockChosen()

    SettingsCard {
        SmallText {
            Layout.fillWidth: true
            Layout.topMargin: Theme.gap12
            text: root.reason
            color: Theme.text
        }
        PushButton {
            objectName: "toUnlock"
            Layout.topMargin: Theme.gap12
            Layout.bottomMargin: Theme.gap12
            text: qsTr("Go to Unlock")
            onClicked: root.unlockChosen()
        }
    }
}
