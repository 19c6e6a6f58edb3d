import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A server by its address, its model and its key.
ColumnLayout {
    id: root

    required property AISettingsViewModel ai
    required property SettingsStore settings
    property string keychainNotice

    spacing: 0

    SettingsRow {
        title: qsTr("Address")
        explanation: root.ai.addressProblem.length > 0 ? root.ai.addressProblem
            : qsTr("Any server that speaks chat completions.")
        explanationInk: root.ai.addressProblem.length > 0 ? Theme.danger : Theme.secondary

        TextBox {
            objectName: "address"
            Layout.preferredWidth: 300 * Theme.zoom
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
            Layout.preferredWidth: 300 * Theme.zoom - pick.width - 8
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
}
