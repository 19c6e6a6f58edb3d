pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// Rows and columns with lines between the rows only.
Item {
    id: root

    required property var content
    required property string plainText
    property bool framed: false
    // How wide it may get where it needs more than the words around it.
    property real room: 0
    readonly property real excess: framed ? 0 : Math.max(0, Math.min(cells.width, room) - width)

    signal linkAsked(string address)
    signal copyAsked(string text)

    objectName: "table"
    width: parent?.width ?? 0
    implicitHeight: view.implicitHeight + (more.visible ? more.implicitHeight + Theme.gap8 : 0)

    HoverHandler { id: hover }

    SidewaysView {
        id: view

        x: -Math.round(root.excess / 2)
        width: parent.width + root.excess

        TextEdit {
            id: cells

            readonly property string pointedLink: hoveredLink
            readonly property point linkPlace: pointer.point.position

            objectName: "tableText"
            readOnly: true
            selectByMouse: true
            selectByKeyboard: true
            activeFocusOnTab: true
            textFormat: TextEdit.PlainText
            width: table.width
            wrapMode: TextEdit.Wrap
            color: Theme.text
            font.pixelSize: Theme.tableSize
            selectionColor: Theme.selection
            selectedTextColor: Theme.text

            Accessible.role: Accessible.Table
            Accessible.name: qsTr("Table: %1").arg(root.plainText)
            Accessible.readOnly: true

            onLinkActivated: link => root.linkAsked(link)
            onContentSizeChanged: table.measure()
            onCursorRectangleChanged: if (activeFocus) view.reveal(cursorRectangle.x - Theme.gap16,
                                                                   cursorRectangle.x + Theme.gap16)

            ReadOnlyKeys { text: cells }
            TableDocument {
                id: table

                document: cells.textDocument
                table: root.content.table
                lineHeight: Theme.tableSize * 1.4
                linkColor: Theme.accent
                codeGround: Theme.codeWash
                codeFamily: Theme.monoFamily
            }
            HoverHandler {
                id: pointer

                cursorShape: cells.hoveredLink.length > 0 ? Qt.PointingHandCursor : Qt.IBeamCursor
            }
            Later {
                part: "blocks/LinkHint.qml"
                given: ({ source: cells })
                wanted: cells.pointedLink.length > 0
            }
        }
        Repeater {
            model: table.rules

            Hairline {
                required property int index
                required property real modelData

                y: Math.round(modelData)
                width: Math.max(cells.width, view.width)
                color: index === 0 ? Theme.outline : Theme.hairline
            }
        }
    }
    FocusRing {
        anchors.fill: view
        visible: cells.activeFocus && Theme.rings
    }
    CaptionText {
        id: more

        anchors.bottom: parent.bottom
        visible: table.hiddenRows > 0
        text: qsTr("%1 more rows; copying the table takes them all.").arg(table.hiddenRows)
    }
    Rectangle {
        anchors.right: view.right
        anchors.top: parent.top
        width: copy.width
        height: copy.height
        radius: Theme.controlRadius
        color: root.framed ? Theme.card : Theme.page
        opacity: hover.hovered || copy.activeFocus || cells.activeFocus ? 1 : 0

        Behavior on opacity { Motion { duration: Theme.fade } }

        CopyButton {
            id: copy

            objectName: "copyTable"
            subject: qsTr("the table")
            onClicked: root.copyAsked(root.plainText)
        }
    }
}
