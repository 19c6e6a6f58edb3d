import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What the application sent and received, as it reports it itself.
Item {
    id: root

    required property NetworkLedgerViewModel ledger
    required property string productName
    property bool shown: false
    readonly property string title: qsTr("Network") // which it is found by

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
                text: qsTr("Network")
            }
            TextBox {
                objectName: "ledgerFilter"
                Layout.fillWidth: true
                Layout.leftMargin: Theme.gap16
                placeholderText: qsTr("Filter by host, feature or outcome")
                Accessible.name: qsTr("Filter the connections")
                onTextChanged: root.ledger.filter = text
            }
            PushButton {
                objectName: "exportLedger"
                enabled: root.ledger.count > 0
                text: qsTr("Export…")
                onClicked: exporter.ask(root.ledger.exportFileName)
            }
            PushButton {
                objectName: "clearLedger"
                enabled: root.ledger.count > 0
                text: qsTr("Clear")
                onClicked: root.ledger.clear()
            }
        }
        SmallText {
            objectName: "exportProblem"
            Layout.fillWidth: true
            visible: text.length > 0
            text: root.ledger.exportProblem
            color: Theme.danger
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        LedgerTable {
            Layout.fillWidth: true
            Layout.fillHeight: true
            model: root.ledger.rows
            emptyText: root.ledger.count > 0 ? qsTr("No connection matches.")
                : qsTr("Nothing yet. Connections appear here as %1 makes them.").arg(root.productName)
        }
        LedgerHelp {
            Layout.fillWidth: true
            productName: root.productName
            connectionLister: root.ledger.connectionLister
        }
    }
    LedgerExporter {
        id: exporter

        suffix: "csv"
        kind: qsTr("Comma-separated values")
        onChosen: file => root.ledger.exportTo(file)
    }
}
