import QtQuick
import QtQuick.Layouts
import Morvane

// A setting: what it is called, what it does, and the control at the right, or below where that leaves the words
// too little room.
Item {
    id: root

    property string title
    property string explanation
    property string keywords // that it is found by as well
    property color explanationInk: Theme.secondary
    default property alias control: controls.data

    readonly property real room: width - controls.width - Theme.gap16 // for the words beside the controls
    readonly property bool isStacked: width > 0 && room < 120 * Theme.zoom

    Layout.fillWidth: true
    implicitHeight: isStacked
        ? words.height + controls.height + 3 * Theme.gap8
        : Math.max(48 * Theme.zoom, Math.max(words.height, controls.height) + 2 * Theme.gap8)

    // Placed by hand: words that wrap in a layout beside controls of their own size are laid out in rounds.
    Column {
        id: words

        y: root.isStacked ? Theme.gap8 : (root.height - height) / 2
        width: root.isStacked ? root.width : root.room
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
        }
    }
    RowLayout {
        id: controls

        x: root.isStacked ? 0 : root.width - width
        y: root.isStacked ? words.y + words.height + Theme.gap8 : (root.height - height) / 2
        spacing: Theme.gap8
    }
}
