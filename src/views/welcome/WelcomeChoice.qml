import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// A place that replies can come from, and what leads there once it is open.
Rectangle {
    id: root

    property string glyph
    property string title
    property string explanation // what leaves the computer
    property bool open: false
    default property alias content: column.data

    signal toggled()

    Layout.fillWidth: true
    implicitHeight: all.implicitHeight
    radius: Theme.cardRadius
    color: Theme.card
    border.width: open ? Theme.focusWidth : Theme.lineWidth
    border.color: open ? Theme.accent : Theme.hairline

    ColumnLayout {
        id: all

        width: parent.width
        spacing: 0

        T.Button {
            id: head

            objectName: root.objectName + ".head"
            Layout.fillWidth: true
            implicitHeight: Math.max(64 * Theme.zoom, implicitContentHeight + 2 * Theme.gap12)
            horizontalPadding: Theme.gap16
            Accessible.role: Accessible.RadioButton
            Accessible.name: root.title
            Accessible.description: root.explanation
            Accessible.checkable: true
            Accessible.checked: root.open
            Keys.onReturnPressed: head.clicked()
            Keys.onEnterPressed: head.clicked()
            onClicked: root.toggled()

            contentItem: RowLayout {
                spacing: Theme.gap16

                Icon {
                    implicitWidth: 24 * Theme.zoom
                    implicitHeight: 24 * Theme.zoom
                    name: root.glyph
                    color: root.open ? Theme.accent : Theme.secondary
                }
                ColumnLayout {
                    spacing: 2

                    PlainText {
                        Layout.fillWidth: true
                        text: root.title
                        font.weight: Font.DemiBold
                    }
                    SmallText {
                        Layout.fillWidth: true
                        text: root.explanation
                    }
                }
                Icon {
                    implicitWidth: 16 * Theme.zoom
                    implicitHeight: 16 * Theme.zoom
                    name: root.open ? "chevron-down" : "chevron-right"
                    color: Theme.secondary
                }
            }
            background: Wash {
                radius: Theme.cardRadius
                down: head.down
                hovered: head.hovered

                FocusRing {
                    radius: Theme.cardRadius
                    visible: head.visualFocus
                }
            }
        }
        Fold {
            Layout.fillWidth: true
            open: root.open
            slides: true // the one that closes as well

            Item {
                width: parent.width
                implicitHeight: Theme.gap4 + column.implicitHeight + Theme.gap16

                ColumnLayout {
                    id: column

                    x: Theme.gap16
                    y: Theme.gap4
                    width: parent.width - 2 * Theme.gap16
                    spacing: Theme.gap8
                }
            }
        }
    }
}
