import QtQuick
import QtQuick.Templates as T
import Morvane

// Leads back to the end of the chat.
T.RoundButton {
    id: root

    property bool shown: false

    implicitWidth: 36 * Theme.zoom
    implicitHeight: 36 * Theme.zoom
    visible: opacity > 0
    opacity: shown ? 1 : 0
    text: qsTr("Go to the end")

    Accessible.name: text
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    Behavior on opacity { Motion { duration: Theme.fade } }

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            width: 20 * Theme.zoom
            height: 20 * Theme.zoom
            name: "arrow-down"
            color: Theme.text
        }
    }
    background: Rectangle {
        radius: 18 * Theme.zoom
        color: Theme.card
        border.width: Theme.lineWidth
        border.color: Theme.hairline

        Wash {
            radius: 18 * Theme.zoom
            down: root.down
            hovered: root.hovered
        }
        FocusRing {
            radius: 20 * Theme.zoom
            visible: root.visualFocus
        }
    }
}
