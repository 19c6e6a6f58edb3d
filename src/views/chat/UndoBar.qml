import QtQuick
import QtQuick.Layouts
import Morvane

// A note that was just saved, notes that were just forgotten or an event that was just added, with the way to take
// that back: a line like that of any ability.
Item {
    id: root

    required property string receiptId
    required property string note
    required property bool isChange
    required property int forgotten
    required property bool isEvent
    required property bool isLeaving
    required property string problem

    signal undoChosen(string id)
    signal dismissed(string id)

    implicitHeight: Math.max(Theme.controlHeight, shown.implicitHeight + Theme.gap8)

    Accessible.role: Accessible.Notification
    Accessible.name: label.text + " " + shown.text

    RowLayout {
        id: line

        anchors.fill: parent
        anchors.leftMargin: Theme.gap16
        spacing: Theme.gap8

        Icon {
            name: root.isEvent ? "check" : "note"
            color: Theme.secondary
            implicitWidth: 16 * Theme.zoom
            implicitHeight: 16 * Theme.zoom
        }
        SmallText {
            id: label

            text: root.isEvent ? (root.isLeaving ? qsTr("Removing…") : root.problem.length > 0 ? qsTr("Not removed:") : qsTr("Added:"))
                : root.forgotten > 1 ? qsTr("Notes forgotten:") : root.forgotten > 0 ? qsTr("Note forgotten:")
                : root.isChange ? qsTr("Note changed:") : qsTr("Note saved:")
            wrapMode: Text.NoWrap
        }
        SmallText {
            id: shown

            Layout.fillWidth: true
            Layout.maximumWidth: Math.ceil(implicitWidth)
            text: root.problem.length > 0 ? root.note + " · " + root.problem : root.note
            color: Theme.text
            elide: Text.ElideRight
            wrapMode: Text.Wrap
            maximumLineCount: 2
        }
        PushButton {
            objectName: "undoNote"
            Layout.preferredHeight: 28 * Math.max(Theme.zoom, Theme.textScale)
            enabled: !root.isLeaving
            text: qsTr("Undo")
            onClicked: root.undoChosen(root.receiptId)
        }
        IconButton {
            objectName: "dismissNote"
            size: 28 * Theme.zoom
            text: root.isEvent ? qsTr("Keep the event and close this") : root.forgotten > 0 ? qsTr("Close this") : qsTr("Keep the note and close this")
            glyph: "close"
            onClicked: root.dismissed(root.receiptId)
        }
        Item { Layout.fillWidth: true }
    }
}
