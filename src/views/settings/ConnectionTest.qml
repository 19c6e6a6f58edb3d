import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Tries the server as it is set up, and says what came of it.
SettingsRow {
    id: root

    required property AISettingsViewModel settings
    readonly property bool running: settings.testState === AISettingsViewModel.running

    title: qsTr("Connection")
    explanation: running ? qsTr("Asking the server…")
        : settings.testState === AISettingsViewModel.untested ? qsTr("Asks the server for a short reply.")
        : (settings.testMessage + " " + settings.testSuggestion).trim()
    explanationInk: settings.testState === AISettingsViewModel.succeeded ? Theme.success
        : settings.testState === AISettingsViewModel.failed ? Theme.danger : Theme.secondary

    Accessible.role: Accessible.StatusBar
    Accessible.name: explanation

    Icon {
        visible: root.settings.testState === AISettingsViewModel.succeeded
            || root.settings.testState === AISettingsViewModel.failed
        name: root.settings.testState === AISettingsViewModel.succeeded ? "check" : "warning"
        color: root.explanationInk
    }
    PushButton {
        objectName: "testConnection"
        text: root.running ? qsTr("Cancel") : qsTr("Test")
        onClicked: root.running ? root.settings.cancelTest() : root.settings.test()
    }
}
