import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Settings in a window of their own. Changes apply at once, so there is nothing to save or to cancel.
T.ApplicationWindow {
    id: root

    required property SettingsModels models
    // In the order of the menu and of the pages below.
    readonly property list<string> pages: ["ai", "instructions", "abilities", "memory", "privacy", "voice", "keyboard", "appearance", "proof", "network", "about"]
    property string page: pages[0]

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
    function focusReplyLimit() {
        root.page = "ai";
        ai.focusReplyLimit();
    }

    title: qsTr("Settings")
    color: Theme.page
    onVisibleChanged: {
        if (visible)
            root.models.localModel.look();
        else
            root.left();
    }

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
    ZoomKeys { shell: root.models.shell }
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

            AIPage {
                id: ai

                ai: root.models.ai
                settings: root.models.store
                privateCloud: root.models.privateCloud
                local: root.models.localModel
                nearby: root.models.nearby
                shell: root.models.shell
            }
            InstructionsPage { instructions: root.models.instructions }
            AbilitiesPage {
                abilities: root.models.abilities
                settings: root.models.store
                searchKey: root.models.searchKey
                calendars: root.models.calendars
                shortcuts: root.models.shortcuts
                shell: root.models.shell
                shown: root.visible && (root.page === "abilities" || menu.searches)
                screenTest: root.models.screenTest
            }
            MemoryPage {
                memory: root.models.memory
                settings: root.models.store
            }
            PrivacyPage {
                lock: root.models.lock
                privacy: root.models.privacy
                about: root.models.about
                settings: root.models.store
                shell: root.models.shell
            }
            VoicePage {
                speaking: root.models.speaking
                microphone: root.models.microphone
                recognition: root.models.recognition
                settings: root.models.store
                talkKey: root.models.talkKey
                shown: root.visible && root.page === "voice"
                sought: root.visible && menu.searches
            }
            KeyboardPage {
                chatKey: root.models.chatKey
                talkKey: root.models.talkKey
            }
            AppearancePage {
                settings: root.models.store
                shell: root.models.shell
            }
            ProofPage {
                ledger: root.models.proofLedger
                shell: root.models.shell
                shown: root.visible && root.page === "proof"
            }
            NetworkPage {
                ledger: root.models.networkLedger
                productName: root.models.shell.productName
                shown: root.visible && root.page === "network"
            }
            AboutPage {
                about: root.models.about
                shell: root.models.shell
                shown: root.visible && (root.page === "about" || menu.searches)
            }
        }
    }
    Later {
        part: "settings/ReaderPanel.qml"
        given: ({ about: root.models.about, shell: root.models.shell })
        wanted: root.models.about.readerTitle.length > 0
    }
}
