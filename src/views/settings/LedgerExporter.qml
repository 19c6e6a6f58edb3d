import QtQuick

// Asks where a ledger's file goes. The file dialog brings half a toolkit along, so it comes only when it is asked for.
Loader {
    id: root

    required property string suffix // "csv"
    required property string kind   // of file, in words

    signal chosen(url file)

    function ask(fileName: string) {
        root.setSource("ExportDialog.qml", { fileName: fileName, suffix: root.suffix, kind: root.kind });
    }

    onLoaded: {
        const dialog = item as ExportDialog;
        dialog.chosen.connect(root.chosen);
        dialog.finished.connect(() => root.source = "");
        dialog.open();
    }
}
