import QtQuick
import Morvane

// A backdrop to choose, in its own colours.
ChoiceButton {
    id: root

    required property string name

    implicitWidth: 44 * Theme.zoom

    Accessible.name: name

    contentItem: null
    background: Rectangle {
        radius: Theme.controlRadius
        border.width: root.checked ? Theme.focusWidth : Theme.lineWidth
        border.color: root.checked ? Theme.accent : Theme.outline
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.backdropColors[root.name][0] }
            GradientStop { position: 1; color: Theme.backdropColors[root.name][1] }
        }

        FocusRing { visible: root.visualFocus }
    }
}
