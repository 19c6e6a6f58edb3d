pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// Prices and how they moved.
DataCard {
    id: root

    required property var content
    required property string plainText

    objectName: "market"
    spacing: 0

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Market prices")
    Accessible.description: plainText

    Repeater {
        model: root.content.entries

        Item {
            id: quote

            required property int index
            required property var modelData

            width: parent?.width ?? 0
            height: Math.max(name.implicitHeight, value.implicitHeight) + 2 * Theme.gap8

            Rectangle {
                visible: quote.index > 0
                width: parent.width
                height: 1
                color: Theme.hairline
            }
            PlainText {
                id: name

                anchors.verticalCenter: parent.verticalCenter
                width: parent.width * 0.42
                text: quote.modelData.name
                font.weight: Font.Medium
            }
            PlainText {
                id: value

                anchors.left: name.right
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width * 0.32
                text: quote.modelData.value
                horizontalAlignment: Text.AlignRight
            }
            ChangeMark {
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: change.length > 0
                change: quote.modelData.change
                direction: quote.modelData.direction
            }
        }
    }
}
