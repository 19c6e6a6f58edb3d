import QtQuick
import QtQuick.Dialogs

// Asks which speech model is used.
FileDialog {
    id: root

    signal chosen(url file)
    signal finished()

    nameFilters: [qsTr("Models of whisper.cpp") + " (*.bin)", qsTr("All files") + " (*)"]
    onAccepted: {
        root.chosen(selectedFile);
        root.finished();
    }
    onRejected: root.finished()
}
