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
    required property ReceiptsModel receipts
    required property CompanionViewModel companion
    required property SettingsModels models
    property var place: ({}) // where the person had been, for a content that takes a former one's place

    readonly property ShellViewModel shell: models.shell

    function switchChat(step: int) {
        const id = window.conversations.neighbour(window.chat.conversationId, step);
        if (id.length > 0)
            window.chat.open(id);
    }
    function beginChat() {
        sidebar.over = false;
        window.chat.newConversation();
        page.focusComposer();
    }
    function beginGhostChat() {
        sidebar.over = false;
        window.chat.ghosts.newGhostChat();
        page.focusComposer();
    }
    function closeSheet() {
        sheet.active = false;
        page.focusComposer();
    }

    // What place brings back in another content.
    function whereabouts(): var {
        const list = page.messageList as MessageList;
        return { list: list ? list.place() : null, settings: others.settingsPage(), overlay: sidebar.over };
    }
    function comeBack() {
        sidebar.over = window.place.overlay ?? false;
        const list = page.messageList as MessageList;
        if (list && window.place.list)
            list.goTo(window.place.list);
        if (window.place.settings)
            others.openSettingsAt(window.place.settings);
        page.goOnWriting();
    }

    anchors.fill: parent
    focus: true
    Component.onCompleted: if (Object.keys(window.place).length > 0) Qt.callLater(window.comeBack) // qmllint disable

    Binding { target: Theme; property: "rings"; value: keeper.tabbed }
    Binding {
        target: Keymap
        property: "talk"
        value: window.chat.entries.voice.isOffered ? window.models.talkKey.chosen : ""
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
            if (sidebar.over)
                sidebar.over = false;
            else if (proof.open && !window.chat.isResponding)
                proof.close();
            else if (!event.isAutoRepeat)
                window.chat.stopResponding();
        }

        ChatPage {
            id: page

            anchors.fill: parent
            anchors.leftMargin: sidebar.taken
            anchors.rightMargin: proof.taken
            enabled: !proof.covers
            focus: true
            chat: window.chat
            shell: window.shell
            sources: window.sources
            receipts: window.receipts
            companion: window.companion
            find: window.find
            sidebarShown: sidebar.shown
            onSettingsChosen: others.openSettings()
            onSidebarChosen: sidebar.toggle()
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
        SidebarSide {
            id: sidebar

            anchors.fill: parent
            chat: window.chat
            conversations: window.conversations
            search: window.search
            find: window.find
            companion: window.companion
            shell: window.shell
            settings: window.models.store
            onNewChatChosen: window.beginChat()
            onNewGhostChatChosen: window.beginGhostChat()
            onSettingsChosen: others.openSettings()
            onDismissed: page.focusComposer()
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
        onSettings: others.openSettings()
        onSidebar: sidebar.toggle()
        onSearch: sidebar.findChat()
        onFind: page.findInChat()
        onStepFind: direction => direction > 0 ? window.find.next() : window.find.previous()
        onSwitchChat: step => window.switchChat(step)
        onAttach: page.askForFiles()
        onComposer: proof.covers ? proof.close() : page.focusComposer()
        onCopyAnswer: page.copyLastAnswer()
        onPage: direction => page.scrollPage(direction)
        onToEnd: page.goToEnd()
        onLock: window.models.lock.lock()
        onSheet: sheet.active = !sheet.active
    }
    Loader {
        id: sheet

        active: false
        source: "ShortcutsSheet.qml"
        onLoaded: {
            const opened = item as ShortcutsSheet;
            opened.closed.connect(window.closeSheet);
            opened.problemReported.connect(() => Qt.callLater(others.reportProblem));
        }
    }
    Later {
        part: "chat/GhostPanel.qml"
        given: ({ ghosts: window.chat.ghosts })
        wanted: window.chat.ghosts.questionId.length > 0
    }
    OtherWindows {
        id: others

        models: window.models
        companion: window.companion
        onDismissed: page.focusComposer()
    }
}
