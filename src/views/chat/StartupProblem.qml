import QtQuick
import QtQuick.Layouts
import Morvane

// What stands in the way of keeping new text safe: said for as long as it lasts.
Rectangle {
    id: root

    required property string message
    required property string suggestion
    default property alias actions: row.data

    implicitHeight: words.implicitHeight + 2 * Theme.gap16
    radius: Theme.cardRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.warning

    Accessible.role: Accessible.Notification
    Accessible.name: message + " " + suggestion

    RowLayout {
        id: words

        anchors.fill: parent
        anchors.margins: Theme.gap16
        spacing: Theme.gap12

        Icon {
            Layout.alignment: Qt.AlignTop
            name: "warning"
            color: Theme.warning
        }
        ColumnLayout {
            spacing: Theme.gap4

            PlainText {
                Layout.fillWidth: true
                text: root.message
                font.weight: Font.Medium
            }
            SmallText {
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.suggestion
            }
            Flow {
                id: row

                Layout.fillWidth: true
                Layout.topMargin: Theme.gap8
                visible: children.length > 0
                spacing: Theme.gap8
            }
        }
    }
}
