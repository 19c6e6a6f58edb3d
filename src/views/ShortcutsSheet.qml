pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// The list of keys.
Panel {
    id: root

    signal problemReported()

    visible: true
    title: qsTr("Keyboard shortcuts")
    widest: 460 * Theme.zoom
    onOpened: closeButton.forceActiveFocus(Qt.TabFocusReason)

    contentItem: ColumnLayout {
        spacing: Theme.gap16

        Flickable {
            Layout.fillWidth: true
            implicitHeight: Math.min(rows.implicitHeight, (root.ground?.height ?? 600) - 240)
            contentHeight: rows.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            T.ScrollBar.vertical: ScrollHandle {}

            Column {
                id: rows

                width: parent.width

                Repeater {
                    model: Keymap.sheetRows

                    RowLayout {
                        id: row

                        required property var modelData

                        width: rows.width
                        height: 30 * Theme.zoom

                        SmallText {
                            Layout.fillWidth: true
                            text: row.modelData.action
                            color: Theme.text
                            elide: Text.ElideRight
                            wrapMode: Text.NoWrap
                            Accessible.role: Accessible.StaticText
                            Accessible.name: row.modelData.keys + ": " + row.modelData.action
                        }
                        KeyCap { text: row.modelData.keys }
                    }
                }
            }
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: Theme.gap8

            PushButton {
                objectName: "sheetProblem"
                text: qsTr("Report a Problem…")
                onClicked: {
                    root.close();
                    root.problemReported();
                }
            }
            PushButton {
                id: closeButton

                text: qsTr("Close")
                onClicked: root.close()
            }
        }
    }
}
