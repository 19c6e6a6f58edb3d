import QtQuick
import Morvane

// What can be done with a text to write in, or to read.
PopupMenu {
    id: root

    required property MenuKeeper keeper
    readonly property var field: keeper.text
    readonly property bool writable: field ? !field.readOnly : false
    readonly property bool secret: (field?.echoMode ?? TextInput.Normal) !== TextInput.Normal
    readonly property bool selected: !secret && (field?.selectedText.length ?? 0) > 0

    objectName: "fieldMenu"
    onClosed: keeper.giveBack()

    PopupMenuItem {
        text: qsTr("Cut")
        offered: root.writable
        enabled: root.selected
        onTriggered: root.field.cut()
    }
    PopupMenuItem {
        text: qsTr("Copy")
        enabled: root.selected
        onTriggered: root.field.copy()
    }
    PopupMenuItem {
        text: qsTr("Paste")
        offered: root.writable
        enabled: root.field?.canPaste ?? false
        onTriggered: root.field.paste()
    }
    PopupMenuItem {
        text: qsTr("Select All")
        enabled: (root.field?.length ?? 0) > 0
        onTriggered: root.field.selectAll()
    }
}
