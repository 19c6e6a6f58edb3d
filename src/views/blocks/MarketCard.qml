pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// Prices and how they moved.
DataCard {
    id: root

    required property var content
    required property string plainText
    readonly property bool narrow: width < 480 * Theme.zoom

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
            height: Math.max(name.implicitHeight, figures.height) + 2 * Theme.gap8

            Hairline {
                visible: quote.index > 0
                width: parent.width
            }
            CardText {
                id: name

                anchors.verticalCenter: parent.verticalCenter
                width: parent.width * 0.42
                text: quote.modelData.name
                font.weight: Font.Medium
            }
            // Side by side, or one below the other where that would break them.
            Grid {
                id: figures

                readonly property real share: root.narrow ? 0.55 : 0.32
                readonly property real changeShare: root.narrow ? 0.55 : 0.26
                readonly property real gap: root.narrow ? 0 : 1 // in the place of a change

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                columns: root.narrow ? 1 : 2
                columnSpacing: Theme.gap8
                horizontalItemAlignment: Grid.AlignRight
                verticalItemAlignment: Grid.AlignVCenter

                CardText {
                    objectName: "marketValue"
                    width: quote.width * figures.share - Theme.gap8
                    text: quote.modelData.value
                    horizontalAlignment: TextEdit.AlignRight
                }
                Item {
                    width: quote.width * figures.changeShare - Theme.gap8
                    height: quote.modelData.change.length > 0 ? mark.height : figures.gap

                    ChangeMark {
                        id: mark

                        objectName: "marketChange"
                        anchors.right: parent.right
                        room: parent.width
                        visible: change.length > 0
                        change: quote.modelData.change
                        direction: quote.modelData.direction
                    }
                }
            }
        }
    }
}
