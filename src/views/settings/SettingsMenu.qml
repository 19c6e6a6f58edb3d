pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The pages of the settings.
Rectangle {
    id: root

    property int currentPage: 0

    signal chosen(int page)

    color: Theme.sidebar

    Column {
        anchors.fill: parent
        anchors.margins: Theme.gap12
        spacing: 2

        Repeater {
            model: [
                { title: qsTr("AI"), glyph: "spark" },
                { title: qsTr("Appearance"), glyph: "appearance" },
                { title: qsTr("Network"), glyph: "network" }
            ]

            SidebarButton {
                id: entry

                required property int index
                required property var modelData

                width: parent.width
                text: modelData.title
                glyph: modelData.glyph
                Accessible.role: Accessible.PageTab
                Accessible.selected: index === root.currentPage
                onClicked: root.chosen(index)

                Rectangle {
                    anchors.fill: parent
                    z: -1
                    radius: Theme.controlRadius
                    visible: entry.index === root.currentPage
                    color: Theme.currentWash
                }
            }
        }
    }
    Rectangle {
        anchors.right: parent.right
        width: 1
        height: parent.height
        color: Theme.hairline
    }
}
