import QtQuick
import QtQuick.Dialogs
import Morvane.ViewModels

// Asks where the ledger's CSV goes.
FileDialog {
    id: root

    property NetworkLedgerViewModel ledger

    signal finished()

    fileMode: FileDialog.SaveFile
    defaultSuffix: "csv"
    nameFilters: [qsTr("Comma-separated values (*.csv)")]
    onLedgerChanged: currentFile = currentFolder + "/" + ledger.exportFileName
    onAccepted: {
        root.ledger.exportTo(selectedFile);
        root.finished();
    }
    onRejected: root.finished()
}
