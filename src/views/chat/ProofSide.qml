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
    readonly property real taken: open && beside ? width : 0
    readonly property Item home: (panel.item as ProofPanel)?.home ?? null

    signal dismissed()

    function close() {
        root.chat.proofPanel.close();
        root.dismissed();
    }

    width: beside ? 380 * Theme.zoom : room
    visible: open

    Rectangle {
        anchors.fill: parent
        visible: root.covers
        color: Theme.scrim

        TapHandler { onTapped: root.close() }
    }
    Rectangle {
        id: ground

        anchors.fill: parent
        anchors.topMargin: root.covers ? 48 * Theme.zoom : 0
        anchors.bottomMargin: root.covers ? -radius : 0 // only its upper corners are seen
        radius: root.covers ? Theme.cardRadius : 0
        color: root.covers ? Theme.floating : Theme.sidebar

        TapHandler {} // what is below gets none of it
        Rectangle {
            width: Theme.lineWidth
            height: parent.height
            visible: root.beside
            color: Theme.hairline
        }
    }
    Later {
        id: panel

        anchors.fill: ground
        anchors.bottomMargin: -ground.anchors.bottomMargin
        focus: true
        part: "chat/ProofPanel.qml"
        given: ({ proof: root.chat.proofPanel, shell: root.shell })
        wanted: root.open
        onLoaded: (item as ProofPanel).closed.connect(root.close)
    }
    Connections {
        target: root.chat.proofPanel

        function onOpened() { root.home?.forceActiveFocus(Theme.rings ? Qt.TabFocusReason : Qt.OtherFocusReason); }
    }
    Connections {
        target: root.chat

        function onNeedsAttention() { if (root.covers) root.close(); } // the card that asks is in the chat
    }
}
