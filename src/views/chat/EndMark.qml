import QtQuick
import QtQuick.Layouts
import Morvane

// How a reply ended when it didn't end well, in plain words.
RowLayout {
    id: root

    property string glyph
    property string text
    property color ink: Theme.secondary

    spacing: Theme.gap8

    Icon {
        Layout.alignment: Qt.AlignTop
        name: root.glyph
        color: root.ink
        implicitWidth: 16 * Theme.zoom
        implicitHeight: 16 * Theme.zoom
    }
    SmallText {
        Layout.fillWidth: true
        text: root.text
        color: root.ink
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
