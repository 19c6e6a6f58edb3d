import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Finds words in the open chat: what to find, which of the finds is the current one, and the way to the others.
Rectangle {
    id: root

    required property FindViewModel find
    readonly property string words: field.length === 0 ? ""
        : find.count > 0 ? qsTr("%1 of %2").arg(find.position).arg(find.count)
        : find.isSearching ? qsTr("Searching…") : qsTr("Not found")

    function takeFocus() {
        field.forceActiveFocus(Qt.ShortcutFocusReason);
        field.selectAll();
    }

    objectName: "findBar"
    implicitWidth: 380 * Theme.zoom
    implicitHeight: row.implicitHeight + 2 * Theme.gap8
    radius: Theme.panelRadius
    color: Theme.floating
    border.width: Theme.lineWidth
    border.color: Theme.outline

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Find in this chat")
    Component.onCompleted: root.takeFocus()

    Connections {
        target: root.find

        function onOpened() { root.takeFocus(); }
        // The place comes before the count that the words name.
        function onCurrentChanged() {
            if (root.find.position > 0)
                Qt.callLater(announcement.announce); // qmllint disable
        }
    }
    HoverHandler {}
    RowLayout {
        id: row

        anchors.fill: parent
        anchors.margins: Theme.gap8
        spacing: Theme.gap4

        TextBox {
            id: field

            objectName: "findField"
            Layout.fillWidth: true
            implicitWidth: 0
            text: root.find.query
            placeholderText: qsTr("Find in this chat")
            inputMethodHints: Qt.ImhNoPredictiveText
            hasProblem: length > 0 && !root.find.isSearching && root.find.count === 0
            onHasProblemChanged: if (hasProblem && root.find.isOpen) announcement.announce()
            onTextEdited: root.find.query = text
            Accessible.name: qsTr("Find in this chat")
            Keys.onReturnPressed: event => event.modifiers & Qt.ShiftModifier ? root.find.previous() : root.find.next()
            Keys.onEnterPressed: event => event.modifiers & Qt.ShiftModifier ? root.find.previous() : root.find.next()
        }
        CaptionText {
            objectName: "findCount"
            Layout.minimumWidth: 64 * Theme.zoom
            horizontalAlignment: Text.AlignHCenter
            text: root.words
            wrapMode: Text.NoWrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        IconButton {
            objectName: "findPrevious"
            size: 28 * Theme.zoom
            enabled: root.find.count > 0
            text: qsTr("Previous find (Shift+Enter)")
            glyph: "arrow-up"
            onClicked: root.find.previous()
        }
        IconButton {
            objectName: "findNext"
            size: 28 * Theme.zoom
            enabled: root.find.count > 0
            text: qsTr("Next find (Enter)")
            glyph: "arrow-down"
            onClicked: root.find.next()
        }
        IconButton {
            objectName: "findClose"
            size: 28 * Theme.zoom
            text: qsTr("Close (Esc)")
            glyph: "close"
            onClicked: root.find.close()
        }
    }
    Announcement {
        id: announcement

        objectName: "findAnnouncement"
        Accessible.role: Accessible.Notification
        Accessible.name: root.words
    }
}
