import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// One text to be read: a licence, a document, a report. A report is copied or saved from here, and only from here.
Panel {
    id: root

    required property AboutViewModel about
    required property ShellViewModel shell

    visible: about.readerTitle.length > 0
    title: about.readerTitle
    widest: 720 * Theme.zoom
    onOpened: closeButton.forceActiveFocus(Qt.TabFocusReason)
    onClosed: about.closeReader()

    contentItem: ColumnLayout {
        spacing: Theme.gap16

        Flickable {
            id: view

            Layout.fillWidth: true
            implicitHeight: Math.min(words.implicitHeight, (root.ground?.height ?? 600) - 240)
            contentHeight: words.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            T.ScrollBar.vertical: ScrollHandle {}

            CardText {
                id: words

                objectName: "readerText"
                width: view.width - Theme.gap12 // beside the handle
                // Only what came with the program: text from elsewhere never is more than text.
                textFormat: root.about.readerIsDocument ? TextEdit.MarkdownText : TextEdit.PlainText
                text: root.about.readerText
                font.family: root.about.readerIsDocument ? closeButton.font.family : Theme.monoFamily
                font.pixelSize: root.about.readerIsDocument ? Theme.smallSize : Theme.captionSize
                onLinkActivated: link => root.shell.openLink(link)
                Accessible.ignored: false
                Accessible.role: Accessible.StaticText
                Accessible.name: root.about.readerText
            }
        }
        SmallText {
            objectName: "saveProblem"
            Layout.fillWidth: true
            visible: text.length > 0
            text: root.about.saveProblem
            color: Theme.danger
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: Theme.gap8

            PushButton {
                objectName: "saveReader"
                visible: root.about.readerFileName.length > 0
                text: qsTr("Save…")
                onClicked: saver.ask(root.about.readerFileName)
            }
            PushButton {
                objectName: "copyReader"
                text: qsTr("Copy")
                onClicked: root.shell.copy(root.about.readerText)
            }
            PushButton {
                id: closeButton

                text: qsTr("Close")
                onClicked: root.close()
            }
        }
    }

    LedgerExporter {
        id: saver

        visible: false // takes no room among the rows
        suffix: "txt"
        kind: qsTr("Text")
        onChosen: file => root.about.save(file)
    }
}
