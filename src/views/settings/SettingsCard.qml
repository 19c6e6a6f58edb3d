import QtQuick
import QtQuick.Layouts
import Morvane

// Rows that belong together.
Rectangle {
    id: root

    property string heading
    property string keywords // that it is found by as well
    default property alias rows: column.data

    Layout.fillWidth: true
    implicitHeight: column.implicitHeight + 2 * Theme.gap8
    radius: Theme.cardRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    Accessible.role: Accessible.Grouping
    Accessible.name: heading

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: Theme.gap8
        anchors.leftMargin: Theme.gap16
        anchors.rightMargin: Theme.gap16
        spacing: 0

        SmallText {
            Layout.topMargin: Theme.gap8
            Layout.bottomMargin: Theme.gap4
            visible: text.length > 0
            text: root.heading
            color: Theme.text
            font.weight: Font.DemiBold
        }
    }
}
