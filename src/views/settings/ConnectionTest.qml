import QtQuick
import Morvane
import Morvane.ViewModels

// Tries the server as it is set up, and says what came of it.
SettingsRow {
    id: root

    required property AISettingsViewModel settings
    readonly property bool running: settings.testState === AISettingsViewModel.TestState.running

    title: qsTr("Connection")
    explanation: running ? qsTr("Asking the server…")
        : settings.testState === AISettingsViewModel.TestState.untested ? qsTr("Asks the server for a short reply.")
        : (settings.testMessage + " " + settings.testSuggestion).trim()
    explanationInk: settings.testState === AISettingsViewModel.TestState.succeeded ? Theme.success
        : settings.testState === AISettingsViewModel.TestState.failed ? Theme.danger : Theme.secondary

    Accessible.role: Accessible.StatusBar
    Accessible.name: explanation

    Icon {
        visible: root.settings.testState === AISettingsViewModel.TestState.succeeded
            || root.settings.testState === AISettingsViewModel.TestState.failed
        name: root.settings.testState === AISettingsViewModel.TestState.succeeded ? "check" : "warning"
        color: root.explanationInk
    }
    PushButton {
        objectName: "testConnection"
        text: root.running ? qsTr("Cancel") : qsTr("Test")
        onClicked: root.running ? root.settings.cancelTest() : root.settings.test()
    }
}
