import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The local model's state and the one press that sets it up: what it would fetch, one question, and how far it is.
ColumnLayout {
    id: root

    required property LocalModelViewModel local
    readonly property bool asks: local.question.length > 0
    readonly property bool lacksModel: local.state === LocalModelViewModel.State.notSetUp
        || local.state === LocalModelViewModel.State.failed

    signal copyAsked(string text)

    spacing: Theme.gap8

    SettingsRow {
        objectName: "localState"
        title: root.local.title
        explanation: root.local.explanation
        explanationInk: root.local.state === LocalModelViewModel.State.failed ? Theme.danger : Theme.secondary
        Accessible.role: Accessible.StatusBar
        Accessible.name: root.local.title // its figures change too often to be said

        Icon {
            visible: root.local.state === LocalModelViewModel.State.ready
            name: "check"
            color: Theme.success
        }
        PushButton {
            objectName: "setUpLocal"
            visible: root.lacksModel && !root.local.isBusy && !root.asks
            enabled: !root.local.isPlanning
            rank: PushButton.Primary
            text: root.local.isPlanning ? qsTr("Looking…")
                : root.local.state === LocalModelViewModel.State.failed ? qsTr("Retry") : qsTr("Set Up")
            onClicked: root.local.setUp()
        }
        PushButton {
            objectName: "cancelLocal"
            visible: root.local.isBusy
            text: qsTr("Cancel")
            onClicked: root.local.cancel()
        }
    }
    ProgressLine {
        Layout.fillWidth: true
        visible: root.local.isFetching
        progress: root.local.progress
    }
    SmallText {
        Layout.fillWidth: true
        visible: root.local.problem.length > 0 && !root.local.isBusy
        text: root.local.problem
        color: Theme.warning
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    LocalModelByHand {
        Layout.fillWidth: true
        visible: root.local.installCommand.length > 0 && !root.local.isBusy
        local: root.local
        onCopyAsked: text => root.copyAsked(text)
    }
    LocalModelQuestion {
        Layout.fillWidth: true
        visible: root.asks
        local: root.local
    }
}
