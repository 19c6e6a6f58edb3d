import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// A line about an ability: what it does or did, and how that ended. It opens to show what was sent and what
// came back.
Column {
    id: root

    required property MessageListModel messages
    required property string messageId
    required property int index
    required property string words
    required property string outcome
    required property bool atWork
    property bool open: false
    readonly property bool isRemark: outcome === "note" // with nothing behind it
    // What came to a good end, or just failed, says so by its words.
    readonly property string ending: atWork ? "" : outcome === "declined" ? qsTr("Not allowed")
        : outcome === "stopped" ? qsTr("Stopped") : outcome === "running" ? qsTr("Interrupted") : ""

    onMessageIdChanged: open = false

    T.Button {
        id: header

        objectName: "toolLine"
        width: Math.min(root.width, implicitWidth)
        implicitWidth: parts.implicitWidth
        implicitHeight: Math.max(Theme.controlHeight, words.implicitHeight + Theme.gap8)
        enabled: !root.isRemark
        onClicked: {
            fold.press();
            root.open = !root.open;
        }

        Accessible.name: root.ending.length > 0 ? root.words + ". " + root.ending : root.words
        Accessible.role: root.isRemark ? Accessible.StaticText : Accessible.Button
        Accessible.description: root.isRemark ? "" : root.open ? qsTr("Hides what was sent and what came back")
            : qsTr("Shows what was sent and what came back")
        Keys.onReturnPressed: header.clicked()
        Keys.onEnterPressed: header.clicked()

        contentItem: Row {
            id: parts

            spacing: Theme.gap8

            ToolMark {
                anchors.verticalCenter: parent.verticalCenter
                width: implicitWidth
                height: implicitHeight
                outcome: root.outcome
                atWork: root.atWork
                isRemark: root.isRemark
            }
            SmallText {
                id: words

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, root.width - 56 * Theme.zoom - (ending.visible ? ending.implicitWidth + 8 : 0))
                text: root.words
                elide: Text.ElideRight
                wrapMode: Text.Wrap
                maximumLineCount: root.outcome === "failed" || root.isRemark ? 12 : 2 // why something failed is read to its end
                Accessible.ignored: true
            }
            SmallText {
                id: ending

                anchors.verticalCenter: parent.verticalCenter
                visible: text.length > 0
                text: root.ending
                font.italic: true
                wrapMode: Text.NoWrap
                Accessible.ignored: true
            }
            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: !root.isRemark
                width: 16 * Theme.zoom
                height: 16 * Theme.zoom
                name: root.open ? "chevron-down" : "chevron-right"
                color: Theme.secondary
            }
        }
        background: Wash {
            anchors.leftMargin: -Theme.gap4
            anchors.rightMargin: -Theme.gap4
            down: header.down
            hovered: header.hovered

            FocusRing { visible: header.visualFocus }
        }
    }
    Fold {
        id: fold

        width: root.width
        open: root.open

        Later {
            width: root.width
            part: "chat/ToolLineDetail.qml"
            given: ({ line: root })
            wanted: root.open
        }
    }
}
