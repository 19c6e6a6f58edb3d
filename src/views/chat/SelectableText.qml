import QtQuick
import Morvane

// Text that can be selected with mouse and keyboard and copied, and that is never more than text.
TextEdit {
    id: root

    property alias shownText: growing.text
    property alias lineHeight: growing.lineHeight

    readOnly: true
    selectByMouse: true
    selectByKeyboard: true
    activeFocusOnTab: true
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    color: Theme.text
    font.pixelSize: Theme.bodySize
    selectionColor: Theme.selection
    selectedTextColor: Theme.text

    Accessible.role: Accessible.StaticText
    Accessible.name: growing.text
    Accessible.readOnly: true

    ReadOnlyKeys { text: root }
    GrowingText {
        id: growing

        document: root.textDocument
        lineHeight: Theme.lineOf(root.font.pixelSize)
    }
}
