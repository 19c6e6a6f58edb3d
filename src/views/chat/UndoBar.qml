import QtQuick
import QtQuick.Layouts
import Morvane

// A note that was just saved, or notes that were just forgotten, with the way to take that back.
Rectangle {
    id: root

    required property string receiptId
    required property string note
    required property bool isChange
    required property int forgotten

    signal undoChosen(string id)
    signal dismissed(string id)

    implicitHeight: Math.max(44, line.implicitHeight + 2 * Theme.gap8)
    radius: Theme.panelRadius
    color: Theme.card
    border.width: 1
    border.color: Theme.hairline

    Accessible.role: Accessible.Notification
    Accessible.name: label.text + " " + note

    RowLayout {
        id: line

        anchors.fill: parent
        anchors.leftMargin: Theme.gap16
        anchors.rightMargin: Theme.gap8
        spacing: Theme.gap8

        Icon {
            name: "note"
            color: Theme.secondary
        }
        SmallText {
            id: label

            text: root.forgotten > 1 ? qsTr("Notes forgotten:") : root.forgotten > 0 ? qsTr("Note forgotten:")
                : root.isChange ? qsTr("Note changed:") : qsTr("Note saved:")
            wrapMode: Text.NoWrap
        }
        SmallText {
            Layout.fillWidth: true
            text: root.note
            color: Theme.text
            elide: Text.ElideRight
            wrapMode: Text.Wrap
            maximumLineCount: 2
        }
        PushButton {
            objectName: "undoNote"
            text: qsTr("Undo")
            onClicked: root.undoChosen(root.receiptId)
        }
        IconButton {
            objectName: "dismissNote"
            text: root.forgotten > 0 ? qsTr("Close this") : qsTr("Keep the note and close this")
            glyph: "close"
            onClicked: root.dismissed(root.receiptId)
        }
    }
}
