import QtQuick
import QtQuick.Layouts
import Morvane

// One place that replies can come from.
Item {
    id: root

    required property int index
    required property string name
    required property string destination
    required property string glyph
    required property string problem
    required property bool inUse
    property bool marked: false
    readonly property bool possible: problem.length === 0

    signal chosen()

    implicitHeight: Math.max(48 * Theme.zoom, words.implicitHeight + 2 * Theme.gap4)

    Accessible.role: Accessible.RadioButton
    Accessible.name: name
    Accessible.description: possible ? destination : problem
    Accessible.checkable: true
    Accessible.checked: inUse
    Accessible.onPressAction: chosen()

    HoverHandler { id: hover }
    TapHandler { onTapped: root.chosen() }

    Rectangle {
        anchors.fill: parent
        radius: Theme.controlRadius
        color: root.inUse ? Theme.currentWash : "transparent"
        border.width: root.marked ? Theme.focusWidth : 0
        border.color: Theme.accent

        Wash { hovered: hover.hovered && root.possible && !root.inUse }
    }
    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap8
        anchors.rightMargin: Theme.gap12
        spacing: Theme.gap12

        Icon {
            name: root.glyph
            color: root.possible ? Theme.text : Theme.disabled
        }
        ColumnLayout {
            id: words

            spacing: 1

            PlainText {
                Layout.fillWidth: true
                text: root.name
                color: root.possible ? Theme.text : Theme.disabled
                font.pixelSize: Theme.smallSize
                font.weight: Font.Medium
                elide: Text.ElideMiddle
                wrapMode: Text.NoWrap
            }
            CaptionText {
                Layout.fillWidth: true
                text: root.possible ? root.destination : root.problem
            }
        }
        Icon {
            visible: root.inUse
            name: "check"
            color: Theme.accent
            implicitWidth: 16 * Theme.zoom
            implicitHeight: 16 * Theme.zoom
        }
    }
}
