import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// All that a message will take along of what is attached, to be read before it is sent.
Panel {
    id: root

    required property AttachmentDesk desk

    function scrollBy(distance: real) {
        view.contentY = Math.max(0, Math.min(view.contentY + distance, view.contentHeight - view.height));
    }

    objectName: "attachmentTextPanel"
    title: desk.name
    widest: 640
    onOpened: {
        view.contentY = 0;
        closeButton.forceActiveFocus(Qt.TabFocusReason);
    }

    contentItem: ColumnLayout {
        spacing: Theme.gap12

        Keys.onUpPressed: root.scrollBy(-48)
        Keys.onDownPressed: root.scrollBy(48)

        CaptionText {
            Layout.fillWidth: true
            text: qsTr("This goes along with your message. Nothing has been sent yet.")
        }
        Flickable {
            id: view

            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(words.height, (root.ground?.height ?? 600) * 0.6)
            contentHeight: words.height
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            T.ScrollBar.vertical: ScrollHandle {}

            SelectableText {
                id: words

                objectName: "attachmentWords"
                width: view.width - Theme.gap12
                font.pixelSize: Theme.smallSize
                shownText: root.visible ? root.desk.text : ""
            }
        }
        PushButton {
            id: closeButton

            objectName: "closeAttachmentText"
            Layout.alignment: Qt.AlignRight
            text: qsTr("Close")
            onClicked: root.close()
        }
    }
}
