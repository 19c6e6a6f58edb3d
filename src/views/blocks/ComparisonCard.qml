import QtQuick
import Morvane

// Options side by side: a table on a card, whose first column names what is compared.
DataCard {
    id: root

    required property var content
    required property string plainText

    signal linkAsked(string address)
    signal copyAsked(string text)

    objectName: "comparison"

    TableBlock {
        content: root.content
        plainText: root.plainText
        framed: true
        onCopyAsked: text => root.copyAsked(text)
    }
}
