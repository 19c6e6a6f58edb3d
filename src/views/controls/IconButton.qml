import QtQuick
import QtQuick.Templates as T
import Morvane

// A small button with a drawing on it; its text is its name and its hint.
T.Button {
    id: root

    property string glyph
    property color ink: enabled ? Theme.secondary : Theme.disabled
    property int size: Theme.controlHeight
    property bool quiet: false // no hint, which would lie on a menu of its own

    implicitWidth: size
    implicitHeight: size

    Accessible.name: text
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            width: Math.min(20, root.size / Theme.zoom - 12) * Theme.zoom
            height: width
            name: root.glyph
            color: root.ink
        }
    }
    background: Wash {
        down: root.down
        hovered: root.hovered

        FocusRing { visible: root.visualFocus }
    }
    Later {
        anchors.fill: parent
        part: "controls/ButtonHint.qml"
        given: ({ button: root })
        wanted: root.hovered
    }
}
