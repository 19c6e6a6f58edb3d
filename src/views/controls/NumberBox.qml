import QtQuick
import QtQuick.Templates as T
import Morvane

// A whole number with steps. Say in Accessible.name what it counts.
T.SpinBox {
    id: root

    implicitWidth: 132 * Theme.zoom
    implicitHeight: Theme.controlHeight
    leftPadding: 10 * Theme.zoom
    rightPadding: 62 * Theme.zoom
    editable: true
    inputMethodHints: Qt.ImhDigitsOnly

    validator: IntValidator {
        bottom: root.from
        top: root.to
    }
    contentItem: TextInput {
        text: root.displayText
        font.pixelSize: Theme.smallSize
        color: root.enabled ? Theme.text : Theme.disabled
        selectionColor: Theme.selection
        selectedTextColor: Theme.text
        selectByMouse: true
        verticalAlignment: TextInput.AlignVCenter
        validator: root.validator
        inputMethodHints: root.inputMethodHints
        Accessible.name: root.Accessible.name
    }
    down.indicator: StepButton {
        x: root.width - 60 * Theme.zoom
        height: root.height
        text: "−"
        pressed: root.down.pressed
    }
    up.indicator: StepButton {
        x: root.width - 30 * Theme.zoom
        height: root.height
        text: "+"
        pressed: root.up.pressed
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.card
        border.width: root.activeFocus ? Theme.focusWidth : Theme.lineWidth
        border.color: root.activeFocus ? Theme.accent : Theme.outline
    }

    component StepButton: Rectangle {
        property alias text: sign.text
        property bool pressed: false

        implicitWidth: 28 * Theme.zoom
        color: "transparent"

        Wash {
            anchors.margins: 4
            radius: 5 * Theme.zoom
            down: parent.pressed
            hovered: true // it is to be seen as a button
        }
        SmallText {
            id: sign

            anchors.centerIn: parent
            color: Theme.text
        }
    }
}
