import QtQuick
import QtQuick.Templates as T
import Morvane

// Sends, and in the same place stops the reply that is under way.
T.RoundButton {
    id: root

    required property bool canSend
    required property bool responding

    signal sendChosen()
    signal stopChosen()

    objectName: "sendOrStop"
    implicitWidth: 36 * Theme.zoom
    implicitHeight: 36 * Theme.zoom
    enabled: responding || canSend
    text: responding ? qsTr("Stop") : qsTr("Send")

    Accessible.name: text
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()
    onClicked: responding ? stopChosen() : sendChosen()

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            width: 20 * Theme.zoom
            height: width
            name: root.responding ? "stop" : "send"
            color: root.enabled ? Theme.accentInk : Theme.disabled
        }
    }
    background: Rectangle {
        radius: 18 * Theme.zoom
        color: root.enabled ? Theme.accent : Theme.highContrast ? Theme.pressWash : Theme.hairline

        Wash {
            radius: 18 * Theme.zoom
            down: root.down
            hovered: root.hovered
        }
        FocusRing { // with a gap: it has the button's own colour
            anchors.margins: -2 * Theme.focusWidth
            radius: 22 * Theme.zoom
            visible: root.visualFocus
        }
    }
    Later {
        anchors.fill: parent
        part: "controls/ButtonHint.qml"
        given: ({ button: root })
        wanted: root.hovered
    }
}
