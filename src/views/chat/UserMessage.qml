import QtQuick
import QtQuick.Layouts
import Morvane

// What the person said: a bubble at the right, with what can be done to it beside it. A long one folds.
ColumnLayout {
    id: root

    required property string text
    required property string attachmentName
    property bool canEdit: false
    property bool canDelete: false
    property bool unfolded: false
    readonly property real widest: width * 0.75

    signal editAsked()
    signal deleteAsked()

    spacing: Theme.gap4

    HoverHandler { id: hover }

    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: Theme.gap16
        spacing: Theme.gap8

        MessageTools {
            Layout.alignment: Qt.AlignBottom
            Layout.bottomMargin: Theme.gap8
            shown: hover.hovered
            canEdit: root.canEdit
            canDelete: root.canDelete
            onEditAsked: root.editAsked()
            onDeleteAsked: root.deleteAsked()
        }
        Rectangle {
            implicitWidth: Math.max(words.width, unfold.visible ? unfold.implicitWidth : 0) + 28
            implicitHeight: content.height + 20
            radius: Theme.bubbleRadius
            color: Theme.bubble

            Column {
                id: content

                x: 14
                y: 10
                spacing: Theme.gap8

                FoldedText {
                    id: words

                    widest: root.widest - 28
                    shownText: root.text
                    unfolded: root.unfolded
                    onUnfoldAsked: root.unfolded = true
                }
                PushButton {
                    id: unfold

                    objectName: "unfoldMessage"
                    visible: words.folds
                    text: root.unfolded ? qsTr("Show less") : qsTr("Show all %1 lines").arg(words.lineCount)
                    onClicked: root.unfolded = !root.unfolded
                }
            }
            FocusRing {
                radius: parent.radius + Theme.focusWidth
                visible: words.hasFocus && Theme.rings
            }
        }
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.maximumWidth: root.widest
        visible: root.attachmentName.length > 0
        spacing: Theme.gap4

        Icon {
            name: "paperclip"
            color: Theme.secondary
            implicitWidth: 16
            implicitHeight: 16
        }
        CaptionText {
            Layout.fillWidth: true
            text: root.attachmentName
            elide: Text.ElideMiddle
            wrapMode: Text.NoWrap
        }
    }
}
