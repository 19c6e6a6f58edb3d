import QtQuick
import QtQuick.Layouts
import Morvane

// What the person said: a bubble at the right, with what can be done to it beside it. A long one folds.
Item {
    id: root

    required property string text
    required property string attachmentName
    property bool canEdit: false
    property bool canDelete: false
    property alias unfolded: words.unfolded
    readonly property real widest: width * 0.75

    signal editAsked()
    signal deleteAsked()

    implicitHeight: bubble.y + bubble.height + (attachment.visible ? Theme.gap4 + attachment.height : 0)

    HoverHandler { id: hover }

    MessageTools {
        anchors.right: bubble.left
        anchors.rightMargin: Theme.gap8
        anchors.bottom: bubble.bottom
        anchors.bottomMargin: Theme.gap8
        shown: hover.hovered
        canEdit: root.canEdit
        canDelete: root.canDelete
        onEditAsked: root.editAsked()
        onDeleteAsked: root.deleteAsked()
    }
    Rectangle {
        id: bubble

        anchors.right: parent.right
        y: Theme.gap16
        width: Math.max(words.width, unfold.visible ? unfold.width : 0) + 28 * Theme.zoom
        height: content.height + 20 * Theme.zoom
        radius: Theme.bubbleRadius
        color: Theme.bubble

        Column {
            id: content

            x: 14 * Theme.zoom
            y: 10 * Theme.zoom
            spacing: Theme.gap8

            FoldedText {
                id: words

                widest: root.widest - 28 * Theme.zoom
                shownText: root.text
            }
            PushButton {
                id: unfold

                objectName: "unfoldMessage"
                visible: words.folds
                text: root.unfolded ? qsTr("Show less") : qsTr("Show all %1 lines").arg(words.lineCount)
                onClicked: {
                    words.press();
                    root.unfolded = !root.unfolded;
                }
            }
        }
        FocusRing {
            radius: parent.radius + Theme.focusWidth
            visible: words.hasFocus && Theme.rings
        }
    }
    RowLayout {
        id: attachment

        anchors.right: parent.right
        anchors.top: bubble.bottom
        anchors.topMargin: Theme.gap4
        width: Math.min(implicitWidth, root.widest)
        visible: root.attachmentName.length > 0
        spacing: Theme.gap4

        Icon {
            name: "paperclip"
            color: Theme.secondary
            implicitWidth: 16 * Theme.zoom
            implicitHeight: 16 * Theme.zoom
        }
        CaptionText {
            Layout.fillWidth: true
            text: root.attachmentName
            elide: Text.ElideMiddle
            wrapMode: Text.NoWrap
        }
    }
}
