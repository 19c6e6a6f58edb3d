pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// The rows of the proof ledger.
OpeningTable {
    id: root

    required property ProofLedgerViewModel ledger
    required property string productName

    signal copyAsked(string text)

    model: ledger.rows
    emptyText: ledger.count > 0 ? qsTr("No row is of this kind.")
        : qsTr("Nothing yet. Each answer that %1 asks for leaves a row here.").arg(productName)
    list.objectName: "proofRows"
    list.Accessible.name: qsTr("Proofs")

    delegate: ProofRow {
        width: root.list.width
        ledger: root.ledger
        openedId: root.openedId
        onChosen: root.choose(index)
        onCopyAsked: text => root.copyAsked(text)
    }

    Connections {
        target: root.ledger

        function onKindChanged() { root.list.currentIndex = 0; }
    }
}
