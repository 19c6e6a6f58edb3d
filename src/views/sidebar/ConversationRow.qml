import QtQuick
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

    signal chosen()
    signal renamed(string name)
    signal renameEnded()
    signal deletionAsked()

    function openMenu() {
        menu.popup(menuButton, 0, menuButton.height);
    }
    function beginRename() {
        field.text = root.title;
        root.renaming = true;
        field.forceActiveFocus();
        field.selectAll();
    }
    function endRename(name: string) {
        if (!root.renaming)
            return;
        root.renaming = false;
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
            color: root.isOpen ? Theme.currentWash : hover.hovered ? Theme.hoverWash : "transparent"
            border.width: root.marked ? Theme.focusWidth : 0
            border.color: Theme.accent

            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                width: 3
                height: parent.height - 20
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
        TextBox {
            id: field

            anchors.fill: parent
            visible: root.renaming
            Accessible.name: qsTr("Name of the chat")
            Keys.onReturnPressed: root.endRename(text.trim())
            Keys.onEnterPressed: root.endRename(text.trim())
            onActiveFocusChanged: if (!activeFocus) root.endRename(text.trim())
            Keys.onEscapePressed: root.endRename("")
        }
        IconButton {
            id: menuButton

            anchors.right: parent.right
            anchors.rightMargin: 2
            anchors.verticalCenter: parent.verticalCenter
            size: 28
            visible: !root.renaming && (hover.hovered || root.marked || activeFocus || menu.visible)
            text: qsTr("Rename or delete “%1”").arg(root.title)
            glyph: "more"
            onClicked: root.openMenu()
        }
    }
    PopupMenu {
        id: menu

        PopupMenuItem {
            text: qsTr("Rename")
            onTriggered: root.beginRename()
        }
        PopupMenuItem {
            text: qsTr("Delete…")
            dangerous: true
            onTriggered: root.deletionAsked()
        }
    }
}
