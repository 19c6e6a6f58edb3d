import QtQuick
import Morvane

// Words on a card, to be selected and never more than text. A screen reader reads the card's own words.
TextEdit {
    id: root

    readOnly: true
    selectByMouse: true
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    color: Theme.text
    font.pixelSize: Theme.bodySize
    selectionColor: Theme.selection
    selectedTextColor: Theme.text

    Accessible.ignored: true

    ReadOnlyKeys { text: root }
    LineHeight {
        document: root.textDocument
        height: Theme.lineOf(root.font.pixelSize)
    }
    HoverHandler { cursorShape: Qt.IBeamCursor }
}
