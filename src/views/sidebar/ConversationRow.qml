import QtQuick
import QtQuick.Templates as T
import Morvane

// One chat: its title on one line, and a menu that shows when the pointer or the marker is on it. The first
// of a group has the group's heading above it.
Item {
    id: root

    required property string conversationId
    required property string title
    property string heading
    readonly property real headingHeight: heading.length > 0 ? headingText.implicitHeight : 0
    property bool isOpen: false
    property bool marked: false
    property bool renaming: false
    readonly property bool menuOpen: (menu.item as T.Menu)?.visible ?? false

    signal chosen()
    signal renamed(string name)
    signal renameEnded()
    signal deletionAsked()

    function openMenu() {
        menu.wanted = true;
        (menu.item as ConversationMenu).popup(menuButton, 0, menuButton.height);
    }
    function beginRename() {
        root.renaming = true;
        (field.item as RenameField).begin(root.title);
    }
    function endRename(name: string) {
        if (!root.renaming)
            return;
        root.renaming = false;
        field.focus = false; // or the list would hand the keyboard to it
        if (name.length > 0 && name !== root.title)
            root.renamed(name);
        root.renameEnded();
    }

    implicitHeight: headingHeight + Theme.rowHeight
    ListView.onPooled: renaming = false

    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.selected: isOpen
    Accessible.onPressAction: chosen()

    CaptionText {
        id: headingText

        visible: text.length > 0
        leftPadding: Theme.gap12
        topPadding: Theme.gap12
        bottomPadding: Theme.gap4
        text: root.heading
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    Item {
        anchors.fill: parent
        anchors.topMargin: root.headingHeight

        HoverHandler { id: hover }
        TapHandler {
            enabled: !root.renaming
            onTapped: root.chosen()
            onDoubleTapped: root.beginRename()
        }
        TapHandler {
            acceptedButtons: Qt.RightButton
            onTapped: root.openMenu()
        }

        Rectangle {
            anchors.fill: parent
            radius: Theme.controlRadius
            color: root.isOpen ? Theme.currentWash : "transparent"
            border.width: root.marked && !menuButton.activeFocus ? Theme.focusWidth : 0
            border.color: Theme.accent

            Wash { hovered: hover.hovered && !root.isOpen }
            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                width: 3
                height: parent.height - 20 * Theme.zoom
                radius: 2
                visible: root.isOpen
                color: Theme.accent
            }
        }
        PlainText {
            anchors.fill: parent
            anchors.leftMargin: Theme.gap12
            anchors.rightMargin: menuButton.visible ? menuButton.width + 4 : Theme.gap8
            visible: !root.renaming
            text: root.title
            font.pixelSize: Theme.smallSize
            font.weight: root.isOpen ? Font.Medium : Font.Normal
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            wrapMode: Text.NoWrap
            maximumLineCount: 1
        }
        Later {
            id: field

            anchors.fill: parent
            visible: root.renaming
            part: "sidebar/RenameField.qml"
            wanted: root.renaming
            onLoaded: (item as RenameField).ended.connect(root.endRename)
        }
        IconButton {
            id: menuButton

            anchors.right: parent.right
            anchors.rightMargin: 2
            anchors.verticalCenter: parent.verticalCenter
            size: 28 * Theme.zoom
            visible: !root.renaming && (hover.hovered || root.marked || activeFocus || root.menuOpen)
            text: qsTr("Rename or delete “%1”").arg(root.title)
            glyph: "more"
            quiet: root.menuOpen
            onClicked: root.openMenu()
        }
    }
    Later {
        id: menu

        part: "sidebar/ConversationMenu.qml"
        onLoaded: {
            const entries = item as ConversationMenu;
            entries.renameChosen.connect(root.beginRename);
            entries.deletionChosen.connect(root.deletionAsked);
        }
    }
}
