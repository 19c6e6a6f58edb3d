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
    Component.onCompleted: currentFile = currentFolder + "/" + fileName // once: another folder may be gone to
    onAccepted: {
        root.chosen(selectedFile);
        root.finished();
    }
    onRejected: root.finished()
}
