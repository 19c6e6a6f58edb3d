import QtQuick
import QtQuick.Layouts
import Morvane

// One request: when, to whom and why, how much, and how it ended.
Item {
    id: root

    required property int index
    required property string time
    required property string host
    required property string place
    required property string feature
    required property string carried
    required property string sent
    required property string received
    required property string outcome
    property bool marked: false

    signal chosen()

    implicitHeight: Math.max(48, line.implicitHeight + 2 * Theme.gap8)

    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, %2, %3, %4. %5").arg(time).arg(host).arg(place).arg(feature).arg(outcome)
    Accessible.description: qsTr("Your data: %1. Sent %2, received %3.").arg(carried).arg(sent).arg(received)

    TapHandler { onTapped: root.chosen() }

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap8
        anchors.rightMargin: Theme.gap8
        radius: Theme.controlRadius
        color: root.marked ? Theme.currentWash : "transparent"
    }
    RowLayout {
        id: line

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: Theme.gap16
        anchors.rightMargin: Theme.gap16
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap16

        CaptionText {
            Layout.alignment: Qt.AlignTop
            Layout.preferredWidth: 64
            text: root.time
        }
        LedgerCell {
            first: root.host
            second: root.place + " · " + root.feature
            Layout.fillWidth: true
            Layout.preferredWidth: 1 // what is left over, whatever it says
        }
        LedgerCell {
            first: "↑ " + root.sent + "  ↓ " + root.received
            second: qsTr("Your data: %1").arg(root.carried)
            Layout.fillWidth: false
            Layout.preferredWidth: 150
        }
        LedgerCell {
            first: root.outcome
            Layout.fillWidth: false
            Layout.preferredWidth: 120
        }
    }

    component LedgerCell: ColumnLayout {
        property alias first: firstText.text
        property alias second: secondText.text

        Layout.alignment: Qt.AlignTop
        spacing: 2

        CaptionText {
            id: firstText

            Layout.fillWidth: true
            color: Theme.text
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
        }
        CaptionText {
            id: secondText

            Layout.fillWidth: true
            visible: text.length > 0
            elide: Text.ElideRight
            maximumLineCount: 2
        }
    }
}
