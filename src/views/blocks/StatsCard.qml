pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The few numbers that matter most, large.
DataCard {
    id: root

    required property var content
    required property string plainText

    objectName: "stats"

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Key figures")
    Accessible.description: plainText

    Flow {
        width: parent.width
        spacing: Theme.gap24

        Repeater {
            model: root.content.entries

            Column {
                id: stat

                required property var modelData
                readonly property real widest: parent?.width ?? 0

                spacing: 2

                CardText {
                    width: Math.min(implicitWidth, stat.widest)
                    text: stat.modelData.value
                    font.pixelSize: Theme.headingSize
                    font.weight: Font.DemiBold
                }
                SmallCardText {
                    width: Math.min(implicitWidth, stat.widest)
                    text: stat.modelData.label
                }
                ChangeMark {
                    room: stat.widest
                    visible: change.length > 0
                    change: stat.modelData.change
                    direction: stat.modelData.direction
                }
            }
        }
    }
}
