import QtQuick
import Morvane
import Morvane.ViewModels

// The servers that prove what they are before a message is sealed for them.
SettingsCard {
    id: root

    required property PrivateCloudViewModel cloud
    required property SettingsStore settings

    heading: qsTr("Private cloud")

    SwitchRow {
        objectName: "privateCloud.enabled"
        title: qsTr("Use the private cloud")
        explanation: root.cloud.problem.length > 0 ? root.cloud.problem
            : qsTr("A server proves its hardware first. Then your message is sealed for it on this computer.")
        explanationInk: root.cloud.problem.length > 0 ? Theme.warning : Theme.secondary
        enabled: checked || root.cloud.problem.length === 0
        checked: root.settings.hostedChatEnabled
        onToggled: on => root.settings.hostedChatEnabled = on
    }
    SwitchRow {
        objectName: "privateCloud.thinksLonger"
        title: qsTr("Think longer")
        explanation: qsTr("Lets its model reason at length before it answers. Otherwise it is asked to be brief.")
        enabled: root.cloud.problem.length === 0
        checked: root.settings.privateCloudThinksLonger
        onToggled: on => root.settings.privateCloudThinksLonger = on
    }
    SettingsRow {
        visible: root.cloud.notice.length > 0
        title: qsTr("Why it is off")
        explanation: root.cloud.notice
        explanationInk: Theme.warning
        Accessible.role: Accessible.Notification
        Accessible.name: explanation

        PushButton {
            objectName: "tryPrivateCloudAgain"
            visible: root.cloud.canTryAgain
            text: qsTr("Try Private cloud again")
            onClicked: root.cloud.tryAgain()
        }
    }
}
