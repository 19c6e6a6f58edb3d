import QtQuick
import QtQuick.Templates as T
import Morvane

// Several lines of text to fill in. Say in Accessible.name what it is for.
Rectangle {
    id: root

    property alias text: field.text
    property string placeholderText
    property string description
    property bool tooLong: false // what was to be pasted

    signal edited()
    signal focusLeft()

    radius: Theme.controlRadius
    color: Theme.card
    border.width: field.activeFocus ? Theme.focusWidth : Theme.lineWidth
    border.color: field.activeFocus ? Theme.accent : Theme.outline

    Flickable {
        anchors.fill: parent
        anchors.margins: 10 * Theme.zoom
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        T.ScrollBar.vertical: ScrollHandle {}
        T.TextArea.flickable: T.TextArea {
            id: field

            objectName: root.objectName + ".field"
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            selectByMouse: true
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font.pixelSize: Theme.smallSize
            Accessible.name: root.description
            onTextChanged: {
                root.tooLong = false;
                root.edited();
            }
            onActiveFocusChanged: if (!activeFocus) root.focusLeft()

            // For its menu.
            function canPasteMore(): bool {
                return limit.isExceeded();
            }
            function pasteMore(): bool {
                root.tooLong = true;
                return true;
            }

            LineHeight {
                document: field.textDocument
                height: Theme.smallLine
            }
            PasteLimit {
                id: limit

                field: field
                onExceeded: root.tooLong = true
            }
        }
    }
    SmallText {
        anchors.fill: parent
        anchors.margins: 10 * Theme.zoom
        visible: field.length === 0 && field.preeditText.length === 0
        text: root.placeholderText
        color: Theme.disabled
        elide: Text.ElideRight
        Accessible.ignored: true
    }
}
