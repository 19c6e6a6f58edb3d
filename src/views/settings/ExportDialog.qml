import QtQuick
import QtQuick.Dialogs

// Asks where a ledger's file goes.
FileDialog {
    id: root

    required property string fileName
    required property string suffix
    required property string kind

    signal chosen(url file)
    signal finished()

    fileMode: FileDialog.SaveFile
    defaultSuffix: suffix
    nameFilters: [kind + " (*." + suffix + ")"]
    currentFile: currentFolder + "/" + fileName
    onAccepted: {
        root.chosen(selectedFile);
        root.finished();
    }
    onRejected: root.finished()
}
