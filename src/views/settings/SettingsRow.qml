import QtQuick
import QtQuick.Layouts
import Morvane

// A setting: what it is called, what it does, and the control at the right.
Item {
    id: root

    property string title
    property string explanation
    property color explanationInk: Theme.secondary
    default property alias control: controls.data

    Layout.fillWidth: true
    implicitHeight: Math.max(48, line.implicitHeight + 2 * Theme.gap8)

    RowLayout {
        id: line

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap16

        ColumnLayout {
            Layout.fillWidth: true
            Layout.preferredWidth: 0 // what the controls leave, whatever the words need: no round of layouts
            spacing: 2

            PlainText {
                Layout.fillWidth: true
                text: root.title
                font.pixelSize: Theme.smallSize
                font.weight: Font.Medium
            }
            SmallText {
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.explanation
                color: root.explanationInk
                font.pixelSize: Theme.captionSize
            }
        }
        RowLayout {
            id: controls

            spacing: Theme.gap8
        }
    }
}
