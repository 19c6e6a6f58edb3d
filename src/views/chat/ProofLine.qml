import QtQuick
import QtQuick.Templates as T
import Morvane

// Where an answer came from and what proves it, in one line. It opens the panel that tells the rest.
T.Button {
    id: root

    property string mark // "place", "running", "verified", "refused"
    readonly property color ink: mark === "refused" ? Theme.warning : mark === "verified" ? Theme.success : Theme.secondary

    objectName: "proofLine"
    implicitWidth: Math.ceil(words.implicitWidth) + 16 * Theme.zoom + Theme.gap4
    implicitHeight: 28 * Theme.zoom

    Accessible.name: qsTr("This reply came from: %1").arg(text)
    Accessible.description: qsTr("Shows what is known of it")
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: Item {
        Icon {
            id: drawing

            anchors.verticalCenter: parent.verticalCenter
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
            name: root.mark === "verified" ? "sealed" : root.mark === "refused" ? "warning" : root.mark === "running" ? "spark" : "pin"
            color: root.ink
        }
        CaptionText {
            id: words

            anchors.verticalCenter: parent.verticalCenter
            x: 16 * Theme.zoom + Theme.gap4
            width: parent.width - x
            text: root.text
            color: root.ink
            elide: Text.ElideRight
            wrapMode: Text.NoWrap
            font.underline: root.hovered
        }
    }
    background: Wash {
        anchors.leftMargin: -Theme.gap4
        anchors.rightMargin: -Theme.gap4
        down: root.down
        hovered: root.hovered

        FocusRing { visible: root.visualFocus }
    }
}
