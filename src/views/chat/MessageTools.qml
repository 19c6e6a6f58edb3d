import QtQuick
import Morvane

// What can be done to the person's own message, seen under the pointer and where the keyboard is.
Row {
    id: root

    required property bool shown
    required property bool canEdit
    required property bool canDelete

    signal editAsked()
    signal deleteAsked()

    opacity: shown || edit.activeFocus || trash.activeFocus ? 1 : 0

    Behavior on opacity { Motion { duration: Theme.fade } }

    IconButton {
        id: edit

        objectName: "editMessage"
        size: 28 * Theme.zoom
        visible: root.canEdit
        text: qsTr("Edit and send again")
        glyph: "quill"
        onClicked: root.editAsked()
    }
    IconButton {
        id: trash

        objectName: "deleteMessage"
        size: 28 * Theme.zoom
        visible: root.canDelete
        text: qsTr("Delete with its reply")
        glyph: "trash"
        onClicked: root.deleteAsked()
    }
}
