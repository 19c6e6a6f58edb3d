import QtQuick
import Morvane

// One found chat: its title, and the words around the find below it.
Item {
    id: root

    required property string conversationId
    required property string messageId
    required property string title
    required property string excerpt
    property string heading
    property bool isOpen: false
    property bool marked: false

    signal chosen()
    signal copyAsked(string text)

    function openMenu() {
        menu.wanted = true;
        (menu.item as SearchResultMenu).popup(card, Theme.gap12, card.height);
    }

    implicitHeight: card.y + card.height

    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: excerpt
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
    Rectangle {
        id: card

        y: headingText.visible ? headingText.implicitHeight : 0
        width: root.width
        height: Math.max(Theme.rowHeight, lines.implicitHeight + 2 * Theme.gap8)
        radius: Theme.controlRadius
        color: root.isOpen ? Theme.currentWash : "transparent"
        border.width: root.marked ? Theme.focusWidth : 0
        border.color: Theme.accent

        Wash { hovered: hover.hovered && !root.isOpen }
        HoverHandler { id: hover }
        TapHandler { onTapped: root.chosen() }
        TapHandler {
            acceptedButtons: Qt.RightButton
            onTapped: root.openMenu()
        }

        Column {
            id: lines

            anchors.verticalCenter: parent.verticalCenter
            x: Theme.gap12
            width: parent.width - Theme.gap12 - Theme.gap8
            spacing: 2

            PlainText {
                width: parent.width
                text: root.title
                font.pixelSize: Theme.smallSize
                font.weight: root.isOpen ? Font.Medium : Font.Normal
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
                maximumLineCount: 1
            }
            CaptionText {
                width: parent.width
                visible: text.length > 0
                text: root.excerpt
                elide: Text.ElideRight
                wrapMode: Text.Wrap
                maximumLineCount: 2
            }
        }
    }
    Later {
        id: menu

        part: "sidebar/SearchResultMenu.qml"
        given: ({ row: root })
    }
}
