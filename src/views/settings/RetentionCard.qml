pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// How long chats are kept.
SettingsCard {
    id: root

    required property SettingsStore settings
    required property string productName

    SettingsRow {
        title: qsTr("Keep chats")
        explanation: qsTr("After their last message.")

        Repeater {
            model: [
                { choice: "forever", words: qsTr("Forever") },
                { choice: "ninetyDays", words: qsTr("90 days") },
                { choice: "thirtyDays", words: qsTr("30 days") },
                { choice: "sevenDays", words: qsTr("7 days") }
            ]

            ChoiceButton {
                required property var modelData

                objectName: "retention." + modelData.choice
                text: modelData.words
                checked: root.settings.conversationRetention === modelData.choice
                onClicked: root.settings.conversationRetention = modelData.choice
            }
        }
    }
    SmallText {
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.gap8
        text: root.settings.conversationRetention === "forever"
            ? qsTr("A chat stays until you delete it.")
            : qsTr("Chats older than that are deleted for good each time %1 starts.").arg(root.productName)
    }
}
