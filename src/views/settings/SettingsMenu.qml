pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The pages of the settings.
Rectangle {
    id: root

    property string currentPage

    signal chosen(string page)

    color: Theme.sidebar

    Column {
        anchors.fill: parent
        anchors.margins: Theme.gap12
        spacing: 2

        Repeater {
            model: [
                { page: "ai", title: qsTr("AI"), glyph: "spark" },
                { page: "instructions", title: qsTr("Instructions"), glyph: "quill" },
                { page: "abilities", title: qsTr("Abilities"), glyph: "globe" },
                { page: "memory", title: qsTr("Memory"), glyph: "note" },
                { page: "privacy", title: qsTr("Privacy"), glyph: "privacy" },
                { page: "voice", title: qsTr("Voice"), glyph: "speaker" },
                { page: "keyboard", title: qsTr("Keyboard"), glyph: "keyboard" },
                { page: "appearance", title: qsTr("Appearance"), glyph: "appearance" },
                { page: "proof", title: qsTr("Proof"), glyph: "sealed" },
                { page: "network", title: qsTr("Network"), glyph: "network" },
                { page: "about", title: qsTr("About"), glyph: "ghost" }
            ]

            SidebarButton {
                id: entry

                required property var modelData

                width: parent.width
                text: modelData.title
                glyph: modelData.glyph
                Accessible.role: Accessible.PageTab
                Accessible.selected: modelData.page === root.currentPage
                onClicked: root.chosen(modelData.page)

                Rectangle {
                    anchors.fill: parent
                    z: -1
                    radius: Theme.controlRadius
                    visible: entry.modelData.page === root.currentPage
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
