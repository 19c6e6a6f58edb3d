import QtQuick
import QtQuick.Dialogs

// Asks which files to attach.
FileDialog {
    id: root

    signal chosen(var files) // addresses
    signal finished()

    fileMode: FileDialog.OpenFiles
    nameFilters: [
        qsTr("Documents and pictures") + " (*.txt *.md *.rtf *.pdf *.png *.jpg *.jpeg *.webp *.gif *.bmp *.tif *.tiff)",
        qsTr("All files") + " (*)"
    ]
    onAccepted: {
        root.chosen(selectedFiles);
        root.finished();
    }
    onRejected: root.finished()
}
