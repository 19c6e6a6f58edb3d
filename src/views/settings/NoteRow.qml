import QtQuick
import QtQuick.Layouts
import Morvane

// One note: a click or Return on it edits it in place.
RowLayout {
    id: root

    required property string factId
    required property string note
    property bool editing: false
    property string begun // what the field held before anything was typed

    signal edited(string text)
    signal removalChosen()

    function begin() {
        field.text = root.note;
        root.begun = field.text;
        root.editing = true;
        field.forceActiveFocus();
    }
    function end(text: string) {
        if (!root.editing)
            return;
        root.editing = false;
        if (text.trim().length > 0 && text !== root.begun)
            root.edited(text.trim());
    }

    Layout.fillWidth: true
    Layout.minimumHeight: 40 * Theme.zoom
    spacing: Theme.gap8

    Accessible.role: Accessible.ListItem
    Accessible.name: note

    SmallText {
        Layout.fillWidth: true
        visible: !root.editing
        text: root.note
        color: Theme.text
    }
    TextBox {
        id: field

        objectName: "noteField"
        Layout.fillWidth: true
        visible: root.editing
        maximumLength: Math.max(240, root.note.length)
        Accessible.name: qsTr("Note")
        Keys.onReturnPressed: root.end(text)
        Keys.onEnterPressed: root.end(text)
        Keys.onEscapePressed: root.end("")
        onActiveFocusChanged: if (!activeFocus) root.end(text)
    }
    IconButton {
        objectName: "editNote"
        visible: !root.editing
        text: qsTr("Edit “%1”").arg(root.note)
        glyph: "quill"
        onClicked: root.begin()
    }
    IconButton {
        objectName: "removeNote"
        visible: !root.editing
        text: qsTr("Delete “%1”").arg(root.note)
        glyph: "close"
        onClicked: root.removalChosen()
    }
}
