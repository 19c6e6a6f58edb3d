import QtQuick
import Morvane
import Morvane.ViewModels

// What stands in the main window. The application hands in the view models; while it is locked there is none
// of this.
FocusScope {
    id: window

    required property ChatViewModel chat
    required property ConversationListModel conversations
    required property HistorySearchModel search
    required property FindViewModel find
    required property SourceMenuViewModel sources
    required property InstructionsViewModel instructions
    required property ReceiptsModel receipts
    required property AbilitiesViewModel abilities
    required property SearchKeyViewModel searchKey
    required property CalendarsViewModel calendars
    required property ShortcutListModel shortcuts
    required property GlobalShortcutViewModel chatKey
    required property GlobalShortcutViewModel talkKey
    required property MemoryViewModel memory
    required property AISettingsViewModel aiSettings
    required property LocalModelViewModel localModel
    required property NearbyViewModel nearby
    required property SettingsStore settings
    required property NetworkLedgerViewModel networkLedger
    required property ProofLedgerViewModel proofLedger
    required property PrivateCloudViewModel privateCloud
    required property PrivacyViewModel privacy
    required property SpeakingViewModel speaking
    required property MicrophoneViewModel microphone
    required property RecognitionViewModel recognition
    required property ScreenTestViewModel screenTest
    required property ShellViewModel shell
    required property CompanionViewModel companion
    required property AppLockViewModel lock
    required property AboutViewModel about
    property var place: ({}) // where the person had been, for a content that takes a former one's place

    readonly property bool narrow: width < 800 * Theme.zoom
    property bool overlayOpen: false
    readonly property bool sidebarShown: narrow ? overlayOpen : settings.chatHistoryOpen

    function toggleSidebar() {
        if (window.narrow)
            window.overlayOpen = !window.overlayOpen;
        else
            window.settings.chatHistoryOpen = !window.settings.chatHistoryOpen;
    }
    function findChat() {
        if (!window.sidebarShown)
            window.toggleSidebar();
        list.focusSearch();
    }
    function switchChat(step: int) {
        const id = window.conversations.neighbour(window.chat.conversationId, step);
        if (id.length > 0)
            window.chat.open(id);
    }
    function beginChat() {
        window.overlayOpen = false;
        window.chat.newConversation();
        page.focusComposer();
    }
    function beginGhostChat() {
        window.overlayOpen = false;
        window.chat.ghosts.newGhostChat();
        page.focusComposer();
    }
    function closeSheet() {
        sheet.active = false;
        page.focusComposer();
    }
    function reportProblem() {
        window.openSettingsAt("about");
        window.about.reportProblem();
    }
    function leaveSettings() {
        const welcome = welcomeLoader.item as WelcomeWindow;
        if (welcome)
            return welcome.requestActivate(); // it led there
        Window.window?.requestActivate();
        page.focusComposer();
    }
    function openSettings() {
        if (!settingsLoader.item)
            settingsLoader.setSource("settings/SettingsWindow.qml", {
                aiSettings: window.aiSettings,
                localModel: window.localModel,
                nearby: window.nearby,
                settings: window.settings,
                instructions: window.instructions,
                abilities: window.abilities,
                searchKey: window.searchKey,
                calendars: window.calendars,
                shortcuts: window.shortcuts,
                chatKey: window.chatKey,
                talkKey: window.talkKey,
                memory: window.memory,
                networkLedger: window.networkLedger,
                proofLedger: window.proofLedger,
                privateCloud: window.privateCloud,
                privacy: window.privacy,
                speaking: window.speaking,
                microphone: window.microphone,
                recognition: window.recognition,
                screenTest: window.screenTest,
                lock: window.lock,
                about: window.about,
                shell: window.shell
            });
        const opened = settingsLoader.item as SettingsWindow;
        opened.show();
        opened.raise();
        opened.requestActivate();
    }

    // What place brings back in another content.
    function whereabouts(): var {
        const list = page.messageList as MessageList;
        const opened = settingsLoader.item as SettingsWindow;
        return {
            list: list ? list.place() : null,
            settings: opened?.visible ? opened.page : "",
            overlay: window.overlayOpen
        };
    }
    function comeBack() {
        window.overlayOpen = window.place.overlay ?? false;
        const list = page.messageList as MessageList;
        if (list && window.place.list)
            list.goTo(window.place.list);
        if (window.place.settings) {
            window.openSettings();
            (settingsLoader.item as SettingsWindow).page = window.place.settings;
        }
        page.goOnWriting();
    }
    function openSettingsAt(page: string) {
        window.openSettings();
        (settingsLoader.item as SettingsWindow).page = page;
    }
    function openLedger() {
        window.openSettingsAt("network");
    }
    function openWelcome() {
        if (!welcomeLoader.item)
            welcomeLoader.setSource("welcome/WelcomeWindow.qml", {
                aiSettings: window.aiSettings,
                localModel: window.localModel,
                nearby: window.nearby,
                privateCloud: window.privateCloud,
                settings: window.settings,
                shell: window.shell,
                companion: window.companion
            });
        const opened = welcomeLoader.item as WelcomeWindow;
        opened.show();
        opened.raise();
        opened.requestActivate();
    }
    function leaveWelcome() {
        welcomeLoader.source = "";
        window.shell.welcomeLeft();
    }

    anchors.fill: parent
    focus: true
    Component.onCompleted: if (Object.keys(window.place).length > 0) Qt.callLater(window.comeBack) // qmllint disable
    onNarrowChanged: overlayOpen = false

    Binding { target: Theme; property: "rings"; value: keeper.tabbed }
    Binding {
        target: Keymap
        property: "talk"
        value: window.chat.entries.voice.isOffered ? window.talkKey.chosen : ""
    }
    FocusKeeper {
        id: keeper

        home: proof.covers ? proof.home : page.messageField
        rows: page.messageList
        onRowsMoveAsked: distance => page.scrollBy(distance)
    }
    HoldToTalk { voice: window.chat.entries.voice }
    ZoomKeys { shell: window.shell }
    TextMenus {
        id: menus

        onMessageMenuAsked: place => page.openMenu(menus, place)
    }
    FocusScope {
        id: content

        anchors.fill: parent
        focus: true

        // A key that is held down stops nothing after what its first press did.
        Keys.onEscapePressed: event => {
            if (window.overlayOpen)
                window.overlayOpen = false;
            else if (proof.open && !window.chat.isResponding)
                proof.close();
            else if (!event.isAutoRepeat)
                window.chat.stopResponding();
        }

        ChatPage {
            id: page

            anchors.fill: parent
            anchors.leftMargin: window.narrow ? 0 : Math.max(0, sidebar.x + sidebar.width)
            anchors.rightMargin: proof.taken
            enabled: !proof.covers
            focus: true
            chat: window.chat
            shell: window.shell
            sources: window.sources
            receipts: window.receipts
            companion: window.companion
            find: window.find
            sidebarShown: window.sidebarShown
            onSettingsChosen: window.openSettings()
            onSidebarChosen: window.toggleSidebar()
        }
        ProofSide {
            id: proof

            anchors.right: parent.right
            height: parent.height
            room: parent.width - page.anchors.leftMargin
            chat: window.chat
            shell: window.shell
            onDismissed: page.focusComposer()
        }
        SidebarScrim {
            anchors.fill: parent
            shown: window.narrow && window.overlayOpen
            onDismissed: window.overlayOpen = false
        }
        SidebarFrame {
            id: sidebar

            objectName: "sidebar"
            height: parent.height
            shown: window.sidebarShown
            resizable: !window.narrow
            chosenWidth: window.settings.chatHistoryWidth
            room: window.width
            onWidthChosen: width => window.settings.chatHistoryWidth = width

            Sidebar {
                id: list

                anchors.fill: parent
                chat: window.chat
                conversations: window.conversations
                search: window.search
                find: window.find
                companion: window.companion
                onNewChatChosen: window.beginChat()
                onNewGhostChatChosen: window.beginGhostChat()
                onChatChosen: {
                    window.overlayOpen = false;
                    page.focusComposer();
                }
                onSettingsChosen: window.openSettings()
                onHideChosen: window.toggleSidebar()
                onSearchLeft: page.focusComposer()
                onCopyAsked: text => window.shell.copy(text)
            }
        }
    }
    DropTarget {
        id: drop

        objectName: "dropTarget"
        anchors.fill: parent
        enabled: !proof.covers && window.shell.questionTitle.length === 0
        onDropped: handed => page.takeDropped(handed)

        Later {
            anchors.fill: parent
            visible: wanted
            part: "DropOverlay.qml"
            given: ({ target: drop })
            wanted: drop.offer !== DropTarget.None
        }
    }
    WindowKeys {
        asks: window.chat.hasApproval && content.activeFocus && !proof.activeFocus // popups have the key for themselves
        onDeclined: window.chat.decline()
        onNewChat: window.beginChat()
        onNewGhostChat: window.beginGhostChat()
        onSettings: window.openSettings()
        onSidebar: window.toggleSidebar()
        onSearch: window.findChat()
        onFind: page.findInChat()
        onStepFind: direction => direction > 0 ? window.find.next() : window.find.previous()
        onSwitchChat: step => window.switchChat(step)
        onAttach: page.askForFiles()
        onComposer: proof.covers ? proof.close() : page.focusComposer()
        onCopyAnswer: page.copyLastAnswer()
        onPage: direction => page.scrollPage(direction)
        onToEnd: page.goToEnd()
        onLock: window.lock.lock()
        onSheet: sheet.active = !sheet.active
    }
    Loader {
        id: sheet

        active: false
        source: "ShortcutsSheet.qml"
        onLoaded: {
            const opened = item as ShortcutsSheet;
            opened.closed.connect(window.closeSheet);
            opened.problemReported.connect(() => Qt.callLater(window.reportProblem));
        }
    }
    Later {
        part: "chat/GhostPanel.qml"
        given: ({ ghosts: window.chat.ghosts })
        wanted: window.chat.ghosts.questionId.length > 0
    }
    Loader {
        id: settingsLoader

        onLoaded: (item as SettingsWindow).left.connect(window.leaveSettings)
    }
    Loader {
        id: welcomeLoader

        onLoaded: {
            const opened = item as WelcomeWindow;
            opened.left.connect(() => Qt.callLater(window.leaveWelcome));
            opened.ledgerChosen.connect(window.openLedger);
        }
    }
    Connections {
        target: window.about

        function onPageRequested() { window.openSettingsAt("about"); }
    }
    Connections {
        target: window.shell

        function onWelcomeRequested() { window.openWelcome(); }

        function onSettingsRequested() { window.openSettings(); }
        function onVoiceSettingsRequested() { window.openSettingsAt("voice"); }
        function onAbilitiesRequested() { window.openSettingsAt("abilities"); }
        function onKeyboardSettingsRequested() { window.openSettingsAt("keyboard"); }
        function onReplyLimitRequested() {
            window.openSettings();
            (settingsLoader.item as SettingsWindow).focusReplyLimit();
        }
    }
}
