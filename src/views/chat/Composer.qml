import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The place to write, with the ways into it below and where replies come from between them. Return sends and
// Shift+Return breaks the line; while an input method is composing, Return ends the composition and never sends.
Rectangle {
    id: root

    required property ChatViewModel chat
    required property SourceMenuViewModel sources
    required property string draft
    required property bool canSend
    required property bool responding
    property bool ghost: false // nothing that is written here is kept

    readonly property alias input: field
    readonly property bool composing: field.preeditText.length > 0 || field.inputMethodComposing
    // The keyboard works here, or will when the window is in front again.
    readonly property bool focused: Window.active ? field.activeFocus || button.activeFocus || ways.focused
        || source.activeFocus : field.focus || button.focus

    signal draftEdited(string text)
    signal typed()
    signal sendChosen()
    signal stopChosen()
    signal settingsChosen()

    function takeFocus() {
        field.forceActiveFocus();
    }
    function takeFocusAtEnd() {
        field.forceActiveFocus();
        field.cursorPosition = field.length;
    }
    function returnPressed(event: KeyEvent) {
        root.typed();
        event.accepted = !(event.modifiers & Qt.ShiftModifier);
        if (root.composing)
            InputMethod.commit();
        else if (event.accepted && root.canSend)
            root.sendChosen();
    }

    function askForFiles() {
        ways.askForFiles();
    }

    implicitHeight: scroller.y + scroller.height + Theme.gap4 + tools.height + Theme.gap8
    radius: Theme.composerRadius
    color: Theme.card
    border.width: ghost ? 0 : field.activeFocus ? Theme.focusWidth : Theme.lineWidth
    border.color: field.activeFocus ? Theme.accent : Theme.outline

    DashedFrame {
        objectName: "ghostFrame"
        anchors.fill: parent
        visible: root.ghost
        radius: root.radius
        color: Theme.ghost
        lineWidth: field.activeFocus ? Theme.focusWidth : 1.5
    }
    Column {
        id: above

        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: Theme.gap12
        spacing: Theme.gap8

        Later {
            width: parent.width
            visible: wanted
            part: "chat/VoiceStrip.qml"
            given: ({ voice: root.chat.entries.voice })
            wanted: root.chat.entries.voice.phase !== VoiceEntry.Idle
        }
        Later {
            width: parent.width
            visible: wanted
            part: "chat/AttachmentTray.qml"
            given: ({ chat: root.chat })
            wanted: root.chat.entries.attachments.state !== AttachmentDesk.Empty
        }
    }
    Flickable {
        id: scroller

        anchors.left: parent.left
        anchors.leftMargin: Theme.gap16
        anchors.right: parent.right
        anchors.rightMargin: Theme.gap16
        y: above.y + (above.height > 0 ? above.height + Theme.gap8 : 0)
        height: Math.min(200 * Theme.zoom, Math.max(24 * Theme.zoom, field.contentHeight))
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        T.ScrollBar.vertical: ScrollHandle {}
        T.TextArea.flickable: T.TextArea {
            id: field

            // What else than text can be pasted, for the field's menu.
            function canPasteMore(): bool {
                return root.chat.entries.attachments.canPaste();
            }
            function pasteMore(): bool {
                return root.chat.entries.attachments.paste();
            }

            objectName: "composer"
            focus: true
            text: root.draft
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            selectByMouse: true
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font.pixelSize: Theme.bodySize
            Accessible.name: qsTr("Message")

            onTextChanged: if (text !== root.draft) root.draftEdited(text)
            Keys.onReturnPressed: event => root.returnPressed(event)
            Keys.onEnterPressed: event => root.returnPressed(event)
            Keys.onPressed: event => {
                root.typed();
                event.accepted = event.matches(StandardKey.Paste) && pasteMore();
            }
            onPreeditTextChanged: root.typed()

            LineHeight {
                document: field.textDocument
                height: Theme.bodyLine
            }
            PasteLimit {
                field: field
                onExceeded: handed => root.chat.entries.attachments.take(handed)
            }
        }
    }
    PlainText {
        anchors.left: scroller.left
        anchors.right: scroller.right
        anchors.top: scroller.top
        height: Theme.bodyLine
        lineHeightMode: Text.ProportionalHeight
        lineHeight: 1
        verticalAlignment: Text.AlignBottom // as what is written stands in its lines
        visible: field.length === 0 && field.preeditText.length === 0
        text: qsTr("Write a message")
        color: Theme.disabled
        elide: Text.ElideRight
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
    Item {
        id: tools

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.gap8
        height: button.height

        AttachButtons {
            id: ways

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            chat: root.chat
        }
        SourceButton {
            id: source

            // In the middle, or where the buttons leave room.
            readonly property real room: button.x - ways.width - 2 * Theme.gap8

            x: Math.max(ways.width + Theme.gap8, Math.min((parent.width - width) / 2, button.x - width - Theme.gap8))
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, room)
            sources: root.sources
            onSettingsChosen: root.settingsChosen()
        }
        SendButton {
            id: button

            anchors.right: parent.right
            canSend: root.canSend
            responding: root.responding
            onSendChosen: root.sendChosen()
            onStopChosen: root.stopChosen()
        }
    }
    TapHandler {
        onTapped: root.takeFocus()
    }
}
