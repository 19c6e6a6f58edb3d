import QtQuick
import Morvane
import Morvane.ViewModels

// Tries the server as it is set up, and says what came of it.
SettingsRow {
    id: root

    required property AISettingsViewModel ai
    readonly property bool running: ai.testState === AISettingsViewModel.TestState.running

    title: qsTr("Connection")
    explanation: running ? qsTr("Asking the server…")
        : ai.testState === AISettingsViewModel.TestState.untested ? qsTr("Asks the server for short replies, to see what works.")
        : (ai.testMessage + " " + ai.testSuggestion).trim()
    explanationInk: ai.testState === AISettingsViewModel.TestState.succeeded ? Theme.success
        : ai.testState === AISettingsViewModel.TestState.failed ? Theme.danger : Theme.secondary

    Accessible.role: Accessible.StatusBar
    Accessible.name: explanation

    Icon {
        visible: root.ai.testState === AISettingsViewModel.TestState.succeeded
            || root.ai.testState === AISettingsViewModel.TestState.failed
        name: root.ai.testState === AISettingsViewModel.TestState.succeeded ? "check" : "warning"
        color: root.explanationInk
    }
    PushButton {
        objectName: "testConnection"
        text: root.running ? qsTr("Cancel") : qsTr("Test")
        onClicked: root.running ? root.ai.cancelTest() : root.ai.test()
    }
}
