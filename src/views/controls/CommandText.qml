import QtQuick
import QtQuick.Layouts
import Morvane

// A command for a terminal, to be read, selected and copied.
Rectangle {
    id: root

    required property string command

    signal copyAsked(string text)

    implicitHeight: row.implicitHeight + 2 * Theme.gap8
    radius: Theme.controlRadius
    color: Theme.code
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    RowLayout {
        id: row

        anchors.fill: parent
        anchors.margins: Theme.gap8
        anchors.leftMargin: Theme.gap12
        spacing: Theme.gap8

        CardText {
            objectName: "command"
            Layout.fillWidth: true
            text: root.command
            font.family: Theme.monoFamily
            font.pixelSize: Theme.captionSize
            wrapMode: TextEdit.WrapAnywhere
            Accessible.ignored: false
            Accessible.role: Accessible.StaticText
            Accessible.name: root.command
        }
        CopyButton {
            objectName: "copyCommand"
            Layout.alignment: Qt.AlignTop
            subject: qsTr("the command")
            onClicked: root.copyAsked(root.command)
        }
    }
}
