import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The window of the settings around its pages: the menu beside them, its keys, its search, and what it gives to read.
T.ApplicationWindow {
    id: root

    required property ShellViewModel shell
    required property AboutViewModel about
    // In the order of the menu and of the pages that are put in.
    readonly property list<string> pages: ["ai", "instructions", "abilities", "memory", "privacy", "voice", "keyboard", "appearance", "proof", "network", "about"]
    property string page: pages[0]
    readonly property bool searches: menu.searches
    default property alias shownPages: stack.data

    signal left()

    // Turns to the page, and once that is laid out to the row on it.
    function goTo(page: int, row: Item) {
        root.page = root.pages[page];
        Qt.callLater(() => { // qmllint disable
            const shown = stack.children[stack.currentIndex] as SettingsPage;
            if (shown)
                rowMark.point(shown, row);
        });
    }

    title: qsTr("Settings")
    color: Theme.page
    onVisibleChanged: if (!visible) root.left()

    FirstSize {
        window: root
        best: Qt.size(860 * Theme.zoom, 620 * Theme.zoom)
        least: Qt.size(640, 420)
    }
    Backdrop { anchors.fill: parent }
    RowMark { id: rowMark }
    Shortcut {
        sequences: [Keymap.find, Keymap.search]
        onActivated: menu.focusSearch()
    }
    Shortcut {
        sequence: "Ctrl+W"
        onActivated: root.close()
    }
    FocusKeeper { home: scope }
    ZoomKeys { shell: root.shell }
    TextMenus {}
    FocusScope {
        id: scope

        anchors.fill: parent
        focus: true

        // Comes here when no field and no panel has a use for it.
        Keys.onEscapePressed: root.close()
    }
    RowLayout {
        parent: scope
        anchors.fill: parent
        spacing: 0

        SettingsMenu {
            id: menu

            Layout.fillHeight: true
            implicitWidth: 200 * Theme.zoom
            pages: stack
            currentPage: root.page
            onChosen: page => {
                root.page = page;
                rowMark.clear();
            }
            onRowChosen: (page, row) => root.goTo(page, row)
            onSearchBegun: rowMark.clear()
            onCloseAsked: root.close()
        }
        StackLayout {
            id: stack

            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: root.pages.indexOf(root.page)
        }
    }
    Later {
        part: "settings/ReaderPanel.qml"
        given: ({ about: root.about, shell: root.shell })
        wanted: root.about.readerTitle.length > 0
    }
}
