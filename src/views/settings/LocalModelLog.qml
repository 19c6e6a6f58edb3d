import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The end of the log of setting up, to be read and copied.
Panel {
    id: root

    required property LocalModelViewModel local
    required property ShellViewModel shell

    title: qsTr("Local AI setup log")
    widest: 640 * Theme.zoom
    onOpened: closeButton.forceActiveFocus(Qt.TabFocusReason)

    contentItem: ColumnLayout {
        spacing: Theme.gap16

        Flickable {
            id: view

            Layout.fillWidth: true
            implicitHeight: Math.min(text.implicitHeight, (root.ground?.height ?? 600) - 220)
            contentHeight: text.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            onContentHeightChanged: contentY = Math.max(0, contentHeight - height)

            T.ScrollBar.vertical: ScrollHandle {}

            CardText {
                id: text

                objectName: "localLog"
                width: view.width
                text: root.local.log
                font.family: Theme.monoFamily
                font.pixelSize: Theme.captionSize
                wrapMode: TextEdit.WrapAnywhere
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: root.local.log
            }
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: Theme.gap8

            PushButton {
                text: qsTr("Copy")
                onClicked: root.shell.copy(root.local.log)
            }
            PushButton {
                id: closeButton

                text: qsTr("Close")
                onClicked: root.close()
            }
        }
    }
}
