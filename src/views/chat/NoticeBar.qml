import QtQuick
import QtQuick.Layouts
import Morvane

// One line above the composer that says what is going on, with what can be done about it at its end.
Rectangle {
    id: root

    required property string words
    required property string glyph
    default property alias buttons: line.data

    implicitHeight: Math.max(Theme.controlHeight + Theme.gap12, line.implicitHeight + 2 * Theme.gap8)
    radius: Theme.panelRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    Accessible.role: Accessible.Notification
    Accessible.name: words

    RowLayout {
        id: line

        anchors.fill: parent
        anchors.leftMargin: Theme.gap16
        anchors.rightMargin: Theme.gap8
        spacing: Theme.gap8

        Icon {
            name: root.glyph
            color: Theme.secondary
        }
        SmallText {
            Layout.fillWidth: true
            text: root.words
            color: Theme.text
            wrapMode: Text.Wrap
        }
    }
}
