import QtQuick
import Morvane

// What can be done with a text to write in, or to read.
PopupMenu {
    id: root

    required property MenuKeeper keeper
    readonly property var field: keeper.text
    readonly property bool writable: field ? !field.readOnly : false
    readonly property bool secret: (field?.echoMode ?? TextInput.Normal) !== TextInput.Normal
    readonly property bool takesMore: field?.pasteMore !== undefined // than text
    readonly property bool selected: !secret && (field?.selectedText.length ?? 0) > 0

    property bool holdsMore: false // the clipboard, while it is open

    objectName: "fieldMenu"
    onAboutToShow: holdsMore = takesMore && field.canPasteMore()
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
        enabled: root.holdsMore || (root.field?.canPaste ?? false)
        onTriggered: root.holdsMore ? root.field.pasteMore() : root.field.paste()
    }
    PopupMenuItem {
        text: qsTr("Select All")
        enabled: (root.field?.length ?? 0) > 0
        onTriggered: root.field.selectAll()
    }
}
