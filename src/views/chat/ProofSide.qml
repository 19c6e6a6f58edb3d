import QtQuick
import Morvane
import Morvane.ViewModels

// The place of the proof panel: beside the chat where both have room, else a sheet over it.
Item {
    id: root

    required property ChatViewModel chat
    required property ShellViewModel shell
    property real room // for the chat and the panel
    readonly property bool beside: room >= 800 * Theme.zoom
    readonly property bool open: chat.proofPanel.isOpen
    readonly property bool covers: open && !beside
    property real share: open ? 1 : 0 // of it that has come in
    readonly property real taken: beside ? Math.round(share * width) : 0
    property Item asker: null // has the keyboard again once it closes, where the keyboard opened it
    readonly property Item home: (panel.item as ProofPanel)?.home ?? null

    signal dismissed()

    function close() {
        root.chat.proofPanel.close();
        if (root.asker?.visible)
            root.asker.forceActiveFocus(Qt.TabFocusReason);
        else
            root.dismissed();
    }

    width: beside ? 380 * Theme.zoom : room
    visible: open || share > 0

    opacity: Theme.reduceAnimation && !open ? 0 : 1

    Behavior on share { Motion { duration: Theme.panel } }
    Behavior on opacity {
        enabled: Theme.reduceAnimation

        Motion { duration: Theme.fade }
    }

    Rectangle {
        anchors.fill: parent
        visible: !root.beside
        color: Theme.scrim
        opacity: root.share

        TapHandler { onTapped: root.close() }
    }
    Rectangle {
        id: ground

        x: root.beside ? root.width - root.taken : 0
        y: root.beside ? 0 : Math.round(root.height - (root.height - 48 * Theme.zoom) * root.share)
        width: root.width
        height: root.beside ? root.height : root.height - 48 * Theme.zoom + radius // only its upper corners are seen
        radius: root.beside ? 0 : Theme.cardRadius
        color: root.beside ? Theme.sidebar : Theme.floating

        TapHandler {} // what is below gets none of it
        Hairline {
            height: parent.height
            visible: root.beside
        }
    }
    Later {
        id: panel

        anchors.fill: ground
        anchors.bottomMargin: ground.radius
        focus: true
        part: "chat/ProofPanel.qml"
        given: ({ proof: root.chat.proofPanel, shell: root.shell })
        wanted: root.open
        onLoaded: (item as ProofPanel).closed.connect(root.close)
    }
    Connections {
        target: root.chat.proofPanel

        function onOpened() {
            root.asker = Theme.rings ? root.Window.activeFocusItem : null;
            root.home?.forceActiveFocus(Theme.rings ? Qt.TabFocusReason : Qt.OtherFocusReason);
        }
    }
    Connections {
        target: root.chat

        function onNeedsAttention() { if (root.covers) root.close(); } // the card that asks is in the chat
    }
}
