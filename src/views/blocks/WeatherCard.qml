import QtQuick
import Morvane

// A weather report.
DataCard {
    id: root

    required property var content
    required property string plainText

    objectName: "weather"
    spacing: Theme.gap16

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Weather")
    Accessible.description: plainText

    Item {
        width: parent.width
        height: Math.max(glyph.height, words.height, degrees.height)

        Icon {
            id: glyph

            objectName: "weatherGlyph"
            anchors.verticalCenter: parent.verticalCenter
            visible: name.length > 0
            width: visible ? 44 * Theme.zoom : 0
            height: 44 * Theme.zoom
            name: root.content.glyph
            color: Theme.accent
        }
        Column {
            id: words

            anchors.left: glyph.right
            anchors.leftMargin: glyph.visible ? Theme.gap16 : 0
            anchors.right: degrees.left
            anchors.rightMargin: Theme.gap16
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2

            CardText {
                width: parent.width
                visible: text.length > 0
                text: root.content.condition
                font.weight: Font.DemiBold
            }
            SmallCardText {
                width: parent.width
                visible: text.length > 0
                text: root.content.location
            }
        }
        Column {
            id: degrees

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2

            CardText {
                anchors.right: parent.right
                width: Math.min(implicitWidth, root.width / 3)
                visible: text.length > 0
                text: root.content.high
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
            }
            SmallCardText {
                anchors.right: parent.right
                width: Math.min(implicitWidth, root.width / 3)
                visible: root.content.low.length > 0
                text: qsTr("Low %1").arg(root.content.low)
            }
        }
    }
    FactRows {
        visible: root.content.entries.length > 0
        facts: root.content.entries
    }
    MoreEntries { count: root.content.more }
}
