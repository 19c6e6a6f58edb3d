import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What goes along with the next message: its picture or kind, its name, and how far it is.
Rectangle {
    id: root

    required property AttachmentDesk desk
    required property bool canAct // something may be asked of it now
    required property bool menuOpen
    readonly property bool reading: desk.state === AttachmentDesk.Reading
    readonly property bool failed: desk.state === AttachmentDesk.Failed
    readonly property bool readable: desk.text.length > 0
    readonly property color ink: failed ? Theme.danger
        : desk.state === AttachmentDesk.Cut ? Theme.warning : Theme.secondary

    signal actionsAsked(Item place)
    signal textAsked()

    objectName: "attachmentChip"
    implicitWidth: Math.min(280 * Theme.zoom, Math.max(180 * Theme.zoom, line.implicitWidth + 2 * Theme.gap4))
    implicitHeight: Math.max(48 * Theme.zoom, line.implicitHeight + Theme.gap8)
    radius: Theme.panelRadius
    color: Theme.hoverWash
    border.width: Theme.lineWidth
    border.color: failed ? Theme.danger : Theme.hairline

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Attachment: %1").arg(desk.name)
    Accessible.description: desk.detail

    TapHandler {
        enabled: root.readable
        onTapped: root.textAsked()
    }
    RowLayout {
        id: line

        anchors.fill: parent
        anchors.leftMargin: Theme.gap4
        anchors.rightMargin: Theme.gap4
        spacing: Theme.gap8

        Rectangle {
            Layout.preferredWidth: 40 * Theme.zoom
            Layout.preferredHeight: 40 * Theme.zoom
            radius: Theme.controlRadius
            color: picture.visible ? "transparent" : Theme.bubble

            Thumbnail {
                id: picture

                objectName: "thumbnail"
                anchors.fill: parent
                visible: root.desk.glyph === "picture" && !root.reading
                desk: root.desk // qmllint disable
                radius: Theme.controlRadius
            }
            Icon {
                anchors.centerIn: parent
                visible: !picture.visible
                name: root.desk.glyph
                color: root.ink
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1

            SmallText {
                Layout.fillWidth: true
                text: root.desk.name
                color: Theme.text
                font.weight: Font.Medium
                elide: Text.ElideMiddle
                wrapMode: Text.NoWrap
            }
            CaptionText {
                Layout.fillWidth: true
                text: root.desk.detail
                color: root.ink
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
            }
        }
        Row {
            IconButton {
                objectName: "attachmentText"
                visible: root.readable
                size: 24 * Theme.zoom
                text: qsTr("Show the text")
                glyph: "search"
                onClicked: root.textAsked()
            }
            IconButton {
                objectName: "attachmentActions"
                visible: !root.reading && !root.failed
                enabled: root.canAct
                size: 24 * Theme.zoom
                text: qsTr("Ask about it")
                glyph: "spark"
                quiet: root.menuOpen
                onClicked: root.actionsAsked(this)
            }
            IconButton {
                objectName: "removeAttachment"
                size: 24 * Theme.zoom
                text: root.reading ? qsTr("Stop reading") : root.failed ? qsTr("Close this")
                    : qsTr("Remove the attachment")
                glyph: "close"
                onClicked: root.desk.remove()
            }
        }
    }
    Rectangle {
        anchors.left: parent.left
        anchors.leftMargin: Theme.gap12
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 1
        width: (parent.width - 2 * Theme.gap12) * Math.max(0, root.desk.progress)
        height: 2
        radius: 1
        visible: root.desk.progress > 0
        color: Theme.accent
    }
}
