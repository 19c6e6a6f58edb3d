import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// A wide button of the sidebar: a drawing, then words.
T.Button {
    id: root

    property string glyph

    implicitHeight: Theme.rowHeight
    leftPadding: Theme.gap8
    rightPadding: Theme.gap8

    Accessible.name: text
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: RowLayout {
        spacing: Theme.gap8

        Icon {
            name: root.glyph
            color: Theme.text
            implicitWidth: 20 * Theme.zoom
            implicitHeight: 20 * Theme.zoom
        }
        PlainText {
            Layout.fillWidth: true
            text: root.text
            font.pixelSize: Theme.smallSize
            font.weight: Font.Medium
            elide: Text.ElideRight
            wrapMode: Text.NoWrap
        }
    }
    background: Wash {
        down: root.down
        hovered: root.hovered

        FocusRing { visible: root.visualFocus }
    }
}
