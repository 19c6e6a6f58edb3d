import QtQuick
import Morvane

// Quoted words behind a bar.
Item {
    id: root

    required property int index
    required property var content

    property alias growing: words.growing

    signal linkAsked(string address)

    objectName: "quote"
    width: parent?.width ?? 0
    implicitHeight: words.implicitHeight

    Rectangle {
        width: 3
        height: parent.height
        radius: 1.5
        color: Theme.hairline
    }
    ProseText {
        id: words

        x: Theme.gap16
        width: root.width - x
        words: root.content.words
        activeFocusOnTab: root.index === 0 || root.content.words.hasLinks
        color: Theme.secondary
        onLinkAsked: address => root.linkAsked(address)
    }
}
