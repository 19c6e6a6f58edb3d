pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What a test of the connection found, a line each. Empty, it takes no room.
ColumnLayout {
    id: root

    required property ConnectionFindings findings

    Layout.fillWidth: true
    Layout.bottomMargin: rows.count > 0 ? Theme.gap8 : 0
    spacing: Theme.gap4

    Accessible.role: Accessible.List
    Accessible.name: qsTr("What works")

    Repeater {
        id: rows

        model: root.findings

        delegate: RowLayout {
            id: row

            required property string title
            required property string words
            required property bool works

            objectName: "connectionFinding"
            Layout.fillWidth: true
            spacing: Theme.gap8

            Accessible.role: Accessible.ListItem
            Accessible.name: row.title + ": " + row.words

            Icon {
                Layout.alignment: Qt.AlignTop
                implicitWidth: 16 * Theme.zoom
                implicitHeight: 16 * Theme.zoom
                name: row.works ? "check" : "warning"
                color: row.works ? Theme.success : Theme.warning
            }
            SmallText {
                Layout.alignment: Qt.AlignTop
                Layout.preferredWidth: 72 * Theme.textScale
                text: row.title
                color: Theme.text
                font.pixelSize: Theme.captionSize
                font.weight: Font.Medium
            }
            SmallText {
                Layout.fillWidth: true
                text: row.words
                font.pixelSize: Theme.captionSize
            }
        }
    }
}
