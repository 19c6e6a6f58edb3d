import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// A computer that showed itself.
T.Button {
    id: root

    required property string name
    required property string hostname
    property bool chosen: false

    objectName: "computer"
    implicitWidth: Math.min(260 * Theme.zoom, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    horizontalPadding: Theme.gap12
    verticalPadding: Theme.gap8

    Accessible.name: name
    Accessible.description: hostname
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: RowLayout {
        spacing: Theme.gap8

        Icon {
            name: "computer"
            color: root.chosen ? Theme.accent : Theme.secondary
        }
        ColumnLayout {
            spacing: 0

            PlainText {
                Layout.fillWidth: true
                text: root.name
                font.pixelSize: Theme.smallSize
                font.weight: Font.Medium
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
            }
            CaptionText {
                Layout.fillWidth: true
                text: root.hostname
                elide: Text.ElideMiddle
                wrapMode: Text.NoWrap
            }
        }
    }
    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.card
        border.width: root.chosen ? Theme.focusWidth : Theme.lineWidth
        border.color: root.chosen ? Theme.accent : Theme.hairline

        Wash {
            radius: parent.radius
            down: root.down
            hovered: root.hovered
        }
        FocusRing {
            radius: Theme.panelRadius + Theme.focusWidth
            visible: root.visualFocus
        }
    }
}
