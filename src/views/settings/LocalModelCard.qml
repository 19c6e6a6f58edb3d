pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The model on this computer: how it is, what it takes, and everything that can be done with it.
SettingsCard {
    id: root

    required property LocalModelViewModel local
    required property ShellViewModel shell

    heading: qsTr("On this computer")

    LocalModelPress {
        Layout.fillWidth: true
        Layout.bottomMargin: Theme.gap8
        local: root.local
        onCopyAsked: text => root.shell.copy(text)
    }
    SettingsRow {
        visible: root.local.canStart || root.local.canStop
        title: qsTr("Runtime")
        explanation: root.local.canStop ? qsTr("It runs as long as %1 does.").arg(root.shell.productName)
            : qsTr("It is not running.")

        PushButton {
            objectName: "stopLocal"
            visible: root.local.canStop
            text: qsTr("Stop")
            onClicked: root.local.stop()
        }
        PushButton {
            objectName: "restartLocal"
            visible: root.local.canStart
            text: root.local.restartWord
            onClicked: root.local.restart()
        }
    }
    LocalModelWarning {
        Layout.fillWidth: true
        visible: root.local.warning.length > 0
        local: root.local
    }
    Repeater {
        model: root.local.models

        delegate: LocalModelRow {
            id: row

            Layout.fillWidth: true
            busy: root.local.isBusy
            onUseChosen: root.local.use(row.name)
            onDeleteChosen: deletion.ask(row.name, row.size)
        }
    }
    SmallText {
        Layout.fillWidth: true
        visible: root.local.failure.length > 0
        text: root.local.failure
        color: Theme.danger
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    SettingsRow {
        visible: root.local.isAnswering
        title: qsTr("Another model")
        explanation: qsTr("By its name in Ollama's library.")

        TextBox {
            id: another

            objectName: "anotherModel"
            Layout.preferredWidth: 180 * Theme.zoom
            placeholderText: "llama3.2:3b"
            inputMethodHints: Qt.ImhNoPredictiveText
            Accessible.name: qsTr("Another model")
            onAccepted: fetch.clicked()
        }
        PushButton {
            id: fetch

            objectName: "fetchModel"
            enabled: another.text.trim().length > 0 && !root.local.isBusy
            text: qsTr("Fetch")
            onClicked: {
                root.local.pull(another.text);
                another.clear();
            }
        }
    }
    SettingsRow {
        visible: root.local.offersVision
        title: qsTr("Image model")
        explanation: root.local.vision

        PushButton {
            objectName: "fetchVision"
            visible: root.local.canFetchVision
            text: qsTr("Fetch")
            onClicked: root.local.fetchVision()
        }
    }
    SettingsRow {
        title: qsTr("Log")
        keywords: qsTr("local AI setup")
        explanation: qsTr("What setting up did, step by step. None of your words are in it.")

        PushButton {
            objectName: "showLocalLog"
            text: qsTr("Show")
            onClicked: {
                root.local.readLog();
                log.wanted = true;
                (log.item as LocalModelLog).open();
            }
        }
    }
    Later {
        id: log

        part: "settings/LocalModelLog.qml"
        given: ({ local: root.local, shell: root.shell })
    }
    ConfirmPanel {
        id: deletion

        property string name

        function ask(model: string, size: string) {
            deletion.name = model;
            deletion.explanation = size.length > 0
                ? qsTr("This frees %1. The model can be fetched again.").arg(size) : qsTr("The model can be fetched again.");
            deletion.open();
        }

        title: qsTr("Delete %1?").arg(name)
        remedy: qsTr("Delete")
        onConfirmed: root.local.remove(name)
    }
}
