import QtQuick
import Morvane

// While something is dragged over the window: that it may be dropped anywhere, and what becomes of it.
Item {
    id: root

    required property DropTarget target
    readonly property bool isText: target.offer === DropTarget.Text

    objectName: "dropOverlay"
    Accessible.ignored: true

    Rectangle {
        anchors.fill: parent
        color: Theme.page
        opacity: 0.96
    }
    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.gap16
        radius: Theme.composerRadius
        color: "transparent"
        border.width: 2
        border.color: Theme.accent

        Column {
            anchors.centerIn: parent
            width: Math.min(parent.width - 2 * Theme.gap24, 480 * Theme.zoom)
            spacing: Theme.gap12

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 64 * Theme.zoom
                height: 64 * Theme.zoom
                radius: 20 * Theme.zoom
                color: Theme.accent

                Icon {
                    anchors.centerIn: parent
                    width: 32 * Theme.zoom
                    height: 32 * Theme.zoom
                    name: root.isText ? "quill" : "paperclip"
                    color: Theme.accentInk
                }
            }
            PlainText {
                width: parent.width
                text: root.isText ? qsTr("Drop it to add the text to your message")
                    : qsTr("Drop it to attach it to your message")
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignHCenter
            }
            SmallText {
                width: parent.width
                visible: !root.isText
                text: qsTr("Text, Markdown, rich text, PDF and pictures")
                horizontalAlignment: Text.AlignHCenter
            }
        }
    }
}
