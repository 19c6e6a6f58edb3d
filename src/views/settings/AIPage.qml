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
    property string keychainNotice

    function focusReplyLimit() {
        root.contentY = Math.max(0, Math.min(replies.mapToItem(root.contentItem, 0, 0).y - Theme.gap24,
            root.contentHeight - root.height));
        replyLimit.forceActiveFocus(Qt.OtherFocusReason);
    }

    title: qsTr("AI")

    SettingsCard {
        heading: qsTr("Server")

        SettingsRow {
            title: qsTr("Address")
            explanation: root.ai.addressProblem.length > 0 ? root.ai.addressProblem
                : qsTr("Any server that speaks chat completions.")
            explanationInk: root.ai.addressProblem.length > 0 ? Theme.danger : Theme.secondary

            TextBox {
                objectName: "address"
                Layout.preferredWidth: 300
                text: root.settings.baseURLString
                placeholderText: "http://localhost:11434/v1"
                hasProblem: root.ai.addressProblem.length > 0
                inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoPredictiveText
                Accessible.name: qsTr("Address")
                Accessible.description: root.ai.addressProblem
                onTextEdited: root.settings.baseURLString = text
            }
        }
        SettingsRow {
            title: qsTr("Model")
            explanation: qsTr("The name that the server knows it by.")

            TextBox {
                objectName: "model"
                Layout.preferredWidth: 300 - pick.width - 8
                text: root.settings.model
                Accessible.name: qsTr("Model")
                onTextEdited: root.settings.model = text
            }
            IconButton {
                id: pick

                objectName: "pickModel"
                text: qsTr("Pick a model of the server")
                glyph: "chevron-down"
                onClicked: picker.open()

                ModelPicker {
                    id: picker

                    y: parent.height + 4
                    x: parent.width - width
                    models: root.ai.serverModels
                    current: root.settings.model
                    onChosen: name => root.settings.model = name
                }
            }
        }
        KeyRow {
            hasKey: root.ai.hasKey
            notice: root.ai.keyNotice.length > 0 ? root.ai.keyNotice : root.keychainNotice
            onSaveChosen: key => root.ai.saveKey(key)
            onRemoveChosen: root.ai.saveKey("")
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
                Layout.preferredWidth: 28
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
}
