import QtQuick
import QtQuick.Layouts
import Morvane

// What the person said: a bubble at the right.
ColumnLayout {
    id: root

    required property string text
    required property string attachmentName
    readonly property real widest: width * 0.75

    spacing: Theme.gap4

    Rectangle {
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: Theme.gap16
        implicitWidth: words.width + 28
        implicitHeight: words.height + 20
        radius: Theme.bubbleRadius
        color: Theme.bubble

        SelectableText {
            id: words

            x: 14
            y: 10
            width: Math.min(root.widest - 28, Math.ceil(implicitWidth))
            shownText: root.text
            Accessible.name: qsTr("You: %1").arg(root.text)
        }
        FocusRing {
            radius: parent.radius + Theme.focusWidth
            visible: words.activeFocus && Theme.rings
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
