import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Turns Ghost mode on and off. Where neither can be done it only explains itself, as it does under the pointer and
// the keyboard.
T.Button {
    id: root

    required property GhostDesk ghosts
    property bool pinned: false // the card was asked for, and the pointer hasn't gone since

    objectName: "ghostButton"
    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    text: ghosts.explainer.title

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: ghosts.isOn
    Accessible.description: ghosts.explainer.stateLine + " " + ghosts.explainer.body
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()
    onClicked: {
        root.pinned = !root.ghosts.canToggle;
        root.ghosts.toggleGhostMode();
    }
    onHoveredChanged: if (!hovered) root.pinned = false
    onActiveFocusChanged: if (!activeFocus) root.pinned = false

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            width: 20 * Theme.zoom
            height: 20 * Theme.zoom
            name: "ghost"
            color: root.ghosts.isOn ? Theme.ghost : root.ghosts.canToggle ? Theme.secondary : Theme.disabled
        }
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: root.ghosts.isOn ? Theme.ghostWash : "transparent"

        Wash {
            down: root.down
            hovered: root.hovered
        }
        FocusRing { visible: root.visualFocus }
    }
    Later {
        part: "chat/GhostCard.qml"
        given: ({ button: root })
        wanted: root.hovered || root.visualFocus || root.pinned
    }
}
