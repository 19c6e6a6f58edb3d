pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The domains that a reply's web results came from. They are names, not links.
Flow {
    id: root

    required property list<string> domains

    spacing: Theme.gap8

    Repeater {
        model: root.domains

        Rectangle {
            id: chip

            required property string modelData

            implicitWidth: Math.min(root.width, label.implicitWidth + 38 * Theme.zoom)
            implicitHeight: 26 * Theme.zoom
            radius: 13 * Theme.zoom
            color: "transparent"
            border.width: Theme.lineWidth
            border.color: Theme.hairline

            Icon {
                x: Theme.gap8
                anchors.verticalCenter: parent.verticalCenter
                width: 16 * Theme.zoom
                height: 16 * Theme.zoom
                name: "globe"
                color: Theme.secondary
            }
            CaptionText {
                id: label

                x: 28 * Theme.zoom
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, root.width - 38 * Theme.zoom)
                text: chip.modelData
                elide: Text.ElideMiddle
                wrapMode: Text.NoWrap
                Accessible.role: Accessible.StaticText
                Accessible.name: qsTr("Source: %1").arg(text)
            }
        }
    }
}
