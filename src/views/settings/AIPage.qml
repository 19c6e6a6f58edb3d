import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Where replies come from, and how they are asked for.
SettingsPage {
    id: root

    required property AISettingsViewModel ai
    required property SettingsStore settings
    required property PrivateCloudViewModel privateCloud
    required property LocalModelViewModel local
    required property NearbyViewModel nearby
    required property ShellViewModel shell

    function focusReplyLimit() {
        root.contentY = Math.max(0, Math.min(replies.mapToItem(root.contentItem, 0, 0).y - Theme.gap24,
            root.contentHeight - root.height));
        replyLimit.forceActiveFocus(Qt.OtherFocusReason);
    }

    title: qsTr("AI")

    LocalModelCard {
        local: root.local
        shell: root.shell
    }
    SettingsCard {
        heading: qsTr("A computer nearby")

        NearbyServer {
            Layout.fillWidth: true
            Layout.topMargin: Theme.gap4
            Layout.bottomMargin: Theme.gap8
            nearby: root.nearby
            onCopyAsked: text => root.shell.copy(text)
        }
    }
    SettingsCard {
        heading: qsTr("Server")

        ServerRows {
            Layout.fillWidth: true
            ai: root.ai
            settings: root.settings
            keychainNotice: root.shell.keychainNotice
        }
        ConnectionTest { ai: root.ai }
        ConnectionFindingList { findings: root.ai.findings }
    }
    PrivateCloudCard {
        cloud: root.privateCloud
        settings: root.settings
    }
    SettingsCard {
        id: replies

        heading: qsTr("Replies")

        SettingsRow {
            title: qsTr("Temperature")
            explanation: qsTr("Low is steady, high is inventive.")

            ValueSlider {
                objectName: "temperature"
                from: 0
                to: 2
                stepSize: 0.1
                snapMode: ValueSlider.SnapAlways
                value: root.settings.temperature
                Accessible.name: qsTr("Temperature")
                onMoved: root.settings.temperature = Math.round(value * 10) / 10
            }
            SmallText {
                Layout.preferredWidth: 28 * Theme.zoom
                text: Number(root.settings.temperature).toLocaleString(Qt.locale(), "f", 1)
                color: Theme.text
                horizontalAlignment: Text.AlignRight
            }
        }
        SettingsRow {
            title: qsTr("Longest reply")
            explanation: (qsTr("In tokens. A longer reply stops there and offers to go on.") + " "
                + root.ai.replyLimitNotice).trim()

            NumberBox {
                id: replyLimit

                objectName: "maxOutputTokens"
                from: 1
                to: 1000000
                stepSize: 256
                value: root.settings.maxOutputTokens
                Accessible.name: qsTr("Longest reply in tokens")
                onValueModified: root.settings.maxOutputTokens = value
            }
        }
        SettingsRow {
            title: qsTr("Messages sent along")
            explanation: qsTr("How much of the chat goes with each message.")

            NumberBox {
                objectName: "maxContextMessages"
                from: 1
                to: 1000
                value: root.settings.maxContextMessages
                Accessible.name: qsTr("Messages sent along")
                onValueModified: root.settings.maxContextMessages = value
            }
        }
    }
    SettingsCard {
        SettingsRow {
            title: qsTr("Welcome")
            explanation: qsTr("The first steps, once more.")

            PushButton {
                objectName: "showWelcome"
                text: qsTr("Show")
                onClicked: root.shell.welcomeRequested()
            }
        }
    }
}
