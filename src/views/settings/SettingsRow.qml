import QtQuick
import QtQuick.Layouts
import Morvane

// A setting: what it is called, what it does, and the control at the right.
Item {
    id: root

    property string title
    property string explanation
    property string keywords // that it is found by as well
    property color explanationInk: Theme.secondary
    default property alias control: controls.data

    Layout.fillWidth: true
    implicitHeight: Math.max(48 * Theme.zoom, Math.max(words.height, controls.height) + 2 * Theme.gap8)

    // By anchors: words that wrap in a layout beside controls of their own size are laid out in rounds.
    Column {
        id: words

        anchors.left: parent.left
        anchors.right: controls.left
        anchors.rightMargin: Theme.gap16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2

        PlainText {
            width: parent.width
            text: root.title
            font.pixelSize: Theme.smallSize
            font.weight: Font.Medium
        }
        SmallText {
            width: parent.width
            visible: text.length > 0
            text: root.explanation
            color: root.explanationInk
            font.pixelSize: Theme.captionSize
        }
    }
    RowLayout {
        id: controls

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap8
    }
}
