import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Settings in a window of their own. Changes apply at once, so there is nothing to save or to cancel.
T.ApplicationWindow {
    id: root

    required property AISettingsViewModel aiSettings
    required property LocalModelViewModel localModel
    required property NearbyViewModel nearby
    required property SettingsStore settings
    required property InstructionsViewModel instructions
    required property AbilitiesViewModel abilities
    required property SearchKeyViewModel searchKey
    required property CalendarsViewModel calendars
    required property ShortcutListModel shortcuts
    required property GlobalShortcutViewModel chatKey
    required property GlobalShortcutViewModel talkKey
    required property MemoryViewModel memory
    required property NetworkLedgerViewModel networkLedger
    required property ProofLedgerViewModel proofLedger
    required property PrivateCloudViewModel privateCloud
    required property PrivacyViewModel privacy
    required property SpeakingViewModel speaking
    required property MicrophoneViewModel microphone
    required property RecognitionViewModel recognition
    required property ScreenTestViewModel screenTest
    required property AppLockViewModel lock
    required property AboutViewModel about
    required property ShellViewModel shell
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
            root.localModel.look();
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

            AIPage {
                id: ai

                ai: root.aiSettings
                settings: root.settings
                privateCloud: root.privateCloud
                local: root.localModel
                nearby: root.nearby
                shell: root.shell
            }
            InstructionsPage { instructions: root.instructions }
            AbilitiesPage {
                abilities: root.abilities
                settings: root.settings
                searchKey: root.searchKey
                calendars: root.calendars
                shortcuts: root.shortcuts
                shell: root.shell
                shown: root.visible && (root.page === "abilities" || menu.searches)
                screenTest: root.screenTest
            }
            MemoryPage {
                memory: root.memory
                settings: root.settings
            }
            PrivacyPage {
                lock: root.lock
                privacy: root.privacy
                about: root.about
                settings: root.settings
                shell: root.shell
            }
            VoicePage {
                speaking: root.speaking
                microphone: root.microphone
                recognition: root.recognition
                settings: root.settings
                talkKey: root.talkKey
                shown: root.visible && root.page === "voice"
                sought: root.visible && menu.searches
            }
            KeyboardPage {
                chatKey: root.chatKey
                talkKey: root.talkKey
            }
            AppearancePage {
                settings: root.settings
                shell: root.shell
            }
            ProofPage {
                ledger: root.proofLedger
                shell: root.shell
                shown: root.visible && root.page === "proof"
            }
            NetworkPage {
                ledger: root.networkLedger
                productName: root.shell.productName
                shown: root.visible && root.page === "network"
            }
            AboutPage {
                about: root.about
                shell: root.shell
                shown: root.visible && (root.page === "about" || menu.searches)
            }
        }
    }
    Later {
        part: "settings/ReaderPanel.qml"
        given: ({ about: root.about, shell: root.shell })
        wanted: root.about.readerTitle.length > 0
    }
}
