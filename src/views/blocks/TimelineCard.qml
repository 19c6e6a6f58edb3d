pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// What happened when, along an upright line.
DataCard {
    id: root

    required property var content
    required property string plainText

    objectName: "timeline"
    spacing: 0

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Timeline")
    Accessible.description: plainText

    Repeater {
        id: entries

        model: root.content.entries

        Item {
            id: entry

            required property int index
            required property var modelData
            readonly property bool isLast: index === entries.count - 1

            width: parent?.width ?? 0
            height: words.height + (isLast ? 0 : Theme.gap16)

            Rectangle {
                x: 4 * Theme.zoom
                y: 14 * Theme.zoom
                visible: !entry.isLast
                width: 2 * Theme.zoom
                height: parent.height
                color: Theme.hairline
            }
            Rectangle {
                y: Theme.gap4
                width: 10 * Theme.zoom
                height: 10 * Theme.zoom
                radius: 5 * Theme.zoom
                color: Theme.accent
            }
            Column {
                id: words

                x: Theme.gap24
                width: parent.width - x
                spacing: 2

                SmallCardText {
                    width: parent.width
                    text: entry.modelData.marker
                    font.weight: Font.Medium
                }
                CardText {
                    width: parent.width
                    text: entry.modelData.text
                }
            }
        }
    }
    MoreEntries { count: root.content.more }
}
