import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The place to write. Return sends and Shift+Return breaks the line; while an input method is composing,
// Return ends the composition and never sends.
Rectangle {
    id: root

    required property ChatViewModel chat
    required property string draft
    required property bool canSend
    required property bool responding
    property bool ghost: false // nothing that is written here is kept

    readonly property alias input: field
    readonly property bool composing: field.preeditText.length > 0 || field.inputMethodComposing
    // The keyboard works here, or will when the window is in front again.
    readonly property bool focused: Window.active ? field.activeFocus || button.activeFocus || ways.focused
        : field.focus || button.focus

    signal draftEdited(string text)
    signal typed()
    signal sendChosen()
    signal stopChosen()

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
            Qt.inputMethod.commit();
        else if (event.accepted && root.canSend)
            root.sendChosen();
    }

    function askForFiles() {
        ways.askForFiles();
    }

    implicitHeight: line.height + (above.height > 0 ? above.height + Theme.gap12 : 0)
    radius: Theme.composerRadius
    color: Theme.card
    border.width: ghost ? 0 : field.activeFocus ? Theme.focusWidth : 1
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
    Item {
        id: line

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: Math.max(52, scroller.height + 2 * Theme.gap12)
    }
    Flickable {
        id: scroller

        anchors.left: ways.right
        anchors.leftMargin: Theme.gap8
        anchors.right: button.left
        anchors.rightMargin: Theme.gap8
        anchors.verticalCenter: line.verticalCenter
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

            PasteLimit {
                field: field
                onExceeded: handed => root.chat.entries.attachments.take(handed)
            }
        }
    }
    PlainText {
        anchors.left: scroller.left
        anchors.right: scroller.right
        anchors.verticalCenter: line.verticalCenter
        visible: field.length === 0 && field.preeditText.length === 0
        text: qsTr("Write a message")
        color: Theme.disabled
        elide: Text.ElideRight
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
    AttachButtons {
        id: ways

        anchors.left: line.left
        anchors.leftMargin: 10 * Theme.zoom
        anchors.bottom: line.bottom
        anchors.bottomMargin: Math.round((52 * Theme.zoom - Theme.controlHeight) / 2)
        chat: root.chat
    }
    SendButton {
        id: button

        anchors.right: parent.right
        anchors.rightMargin: Theme.gap8
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gap8
        canSend: root.canSend
        responding: root.responding
        onSendChosen: root.sendChosen()
        onStopChosen: root.stopChosen()
    }
    TapHandler {
        onTapped: root.takeFocus()
    }
}
