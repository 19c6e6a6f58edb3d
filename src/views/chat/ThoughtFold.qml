import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// What the model thought before it answered, folded until it is asked for. Without an answer it is all there is,
// and stands open.
ColumnLayout {
    id: root

    required property ReplyMessage reply
    property bool toggled: false
    readonly property bool unfolded: toggled !== (reply.text.length === 0)

    spacing: 0

    T.AbstractButton {
        id: head

        objectName: "thoughtFold"
        implicitWidth: implicitContentWidth
        implicitHeight: Theme.controlHeight
        text: root.reply.thinkingLabel

        Accessible.role: Accessible.Button
        Accessible.name: text
        Accessible.description: root.unfolded ? qsTr("Hides what the model thought") : qsTr("Shows what the model thought")
        Keys.onReturnPressed: head.clicked()
        Keys.onEnterPressed: head.clicked()
        onClicked: {
            fold.press();
            root.toggled = !root.toggled;
        }

        contentItem: RowLayout {
            spacing: Theme.gap8

            Icon {
                name: root.unfolded ? "chevron-down" : "chevron-right"
                color: Theme.secondary
                implicitWidth: 16 * Theme.zoom
                implicitHeight: 16 * Theme.zoom
            }
            SmallText {
                text: head.text
                color: head.hovered ? Theme.text : Theme.secondary
            }
        }
        HoverHandler { cursorShape: Qt.PointingHandCursor }
        FocusRing { visible: head.visualFocus }
    }
    Fold {
        id: fold

        Layout.fillWidth: true
        open: root.unfolded

        Item {
            width: fold.width
            implicitHeight: thought.y + thought.height

            SelectableText {
                id: thought

                objectName: "thoughtText"
                x: Theme.gap24
                y: Theme.gap8
                width: parent.width - x
                shownText: root.unfolded || fold.share > 0 ? root.reply.thinking : ""
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                lineHeight: Theme.smallLine
                Accessible.name: qsTr("What the model thought: %1").arg(shownText)

                FocusRing { visible: thought.activeFocus }
            }
        }
    }
    Connections {
        target: root.reply

        function onReused() { root.toggled = false; }
    }
}
