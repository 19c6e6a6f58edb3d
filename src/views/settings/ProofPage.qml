pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Where each answer came from, as the application recorded it, and what proves it.
Item {
    id: root

    required property ProofLedgerViewModel ledger
    required property ShellViewModel shell
    property bool shown: false
    readonly property string title: qsTr("Proof") // which it is found by

    Binding {
        target: root.ledger
        property: "watching"
        value: root.shown
    }
    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.gap24
        spacing: Theme.gap12

        RowLayout {
            spacing: Theme.gap8

            TitleText {
                Layout.fillWidth: true
                text: qsTr("Proof")
            }
            PushButton {
                objectName: "exportProofs"
                enabled: root.ledger.count > 0
                text: qsTr("Export…")
                onClicked: exporter.ask(root.ledger.exportFileName)
            }
            PushButton {
                objectName: "clearProofs"
                enabled: root.ledger.count > 0
                text: qsTr("Clear…")
                rank: PushButton.Danger
                onClicked: question.open()
            }
        }
        Flow {
            Layout.fillWidth: true
            spacing: Theme.gap8

            Repeater {
                model: [
                    { kind: ProofLedgerViewModel.Kind.all, name: "all", words: qsTr("All") },
                    { kind: ProofLedgerViewModel.Kind.privateCloud, name: "cloud", words: qsTr("Private cloud") },
                    { kind: ProofLedgerViewModel.Kind.thisComputer, name: "here", words: qsTr("This computer") },
                    { kind: ProofLedgerViewModel.Kind.network, name: "network", words: qsTr("Network") },
                    { kind: ProofLedgerViewModel.Kind.services, name: "services", words: qsTr("Services") },
                    { kind: ProofLedgerViewModel.Kind.refused, name: "refused", words: qsTr("Refused") }
                ]

                ChoiceButton {
                    required property var modelData

                    objectName: "proofs." + modelData.name
                    text: modelData.words
                    checked: root.ledger.kind === modelData.kind
                    onClicked: root.ledger.kind = modelData.kind
                }
            }
        }
        SmallText {
            objectName: "proofExportProblem"
            Layout.fillWidth: true
            visible: text.length > 0
            text: root.ledger.exportProblem
            color: Theme.danger
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        ProofTable {
            Layout.fillWidth: true
            Layout.fillHeight: true
            ledger: root.ledger
            productName: root.shell.productName
            onCopyAsked: text => root.shell.copy(text)
        }
        CaptionText {
            objectName: "acceptedServers"
            Layout.fillWidth: true
            text: qsTr("Accepted servers: %1").arg(root.ledger.acceptedServers)
            color: Theme.text
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        CaptionText {
            Layout.fillWidth: true
            text: qsTr("This is %1's own record, in memory only and empty again when you quit. The bytes in a proof are evidence that others can check; that a row is the message you typed is not.").arg(root.shell.productName)
        }
    }
    ConfirmPanel {
        id: question

        title: qsTr("Clear the list of proofs?")
        explanation: qsTr("The answers stay and still name their place. What proves it is gone and can't be brought back.")
        remedy: qsTr("Clear")
        onConfirmed: root.ledger.clear()
    }
    LedgerExporter {
        id: exporter

        suffix: "json"
        kind: qsTr("Proof file")
        onChosen: file => root.ledger.exportTo(file)
    }
}
