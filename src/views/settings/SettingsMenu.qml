pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The pages of the settings, and a search of all that stands on them.
Rectangle {
    id: root

    required property Item pages // one item each, in the order of the list
    property string currentPage
    readonly property bool searches: finder.query.length > 0

    signal chosen(string page)
    signal rowChosen(int page, Item row)
    signal searchBegun()
    signal closeAsked()

    function focusSearch() {
        field.forceActiveFocus(Qt.ShortcutFocusReason);
        field.selectAll();
    }
    function choose(row: int) {
        if (row >= 0 && row < finder.count)
            root.rowChosen(finder.page(row), finder.item(row));
    }

    color: Theme.sidebar

    SettingsFinder {
        id: finder

        pages: root.pages
        query: field.text
        onQueryChanged: root.searchBegun()
        onFound: {
            if (query.length > 0)
                announcement.say(count === 0 ? qsTr("Nothing found") : qsTr("%1 found").arg(count));
        }
    }
    Announcement {
        id: announcement

        property string words

        function say(text: string) {
            announcement.words = text;
            announcement.announce();
        }

        Accessible.role: Accessible.Notification
        Accessible.name: words
    }
    SearchField {
        id: field

        objectName: "settingsSearch"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: Theme.gap12
        implicitWidth: 0
        purpose: qsTr("Search settings")
        maximumLength: 200
        onAbandoned: root.closeAsked()
        onEntered: root.choose(0)
        onResultsWanted: results.begin()
    }
    SettingsResults {
        id: results

        anchors.fill: list
        visible: finder.query.length > 0
        model: finder
        onChosen: row => root.choose(row)
        onAbandoned: root.focusSearch()
    }
    Flickable {
        id: list

        anchors.fill: parent
        anchors.margins: Theme.gap12
        anchors.topMargin: field.height + 2 * Theme.gap12
        visible: finder.query.length === 0
        contentHeight: entries.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height

        Column {
            id: entries

            width: parent.width
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
    }
    Hairline {
        anchors.right: parent.right
        height: parent.height
    }
}
