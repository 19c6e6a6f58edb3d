import QtQuick
import QtQuick.Templates as T
import Morvane

// One of a few, of which the arrow keys lead to the next.
T.RadioButton {
    id: root

    property Item group: parent // that holds the others

    function activate() {
        root.toggle();
        root.clicked();
    }

    function leave(forward: bool): bool {
        const next = root.nextItemInFocusChain(forward) as ChoiceButton;
        if (next?.group !== root.group)
            return false;
        next.forceActiveFocus(Qt.TabFocusReason);
        return true;
    }

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    horizontalPadding: 14 * Theme.zoom

    Accessible.name: text
    Keys.onReturnPressed: root.activate()
    Keys.onEnterPressed: root.activate()
    Keys.onLeftPressed: event => event.accepted = root.leave(false)
    Keys.onUpPressed: event => event.accepted = root.leave(false)
    Keys.onRightPressed: event => event.accepted = root.leave(true)
    Keys.onDownPressed: event => event.accepted = root.leave(true)

    contentItem: Text {
        textFormat: Text.PlainText
        text: root.text
        font.pixelSize: Theme.smallSize
        font.weight: root.checked ? Font.DemiBold : Font.Normal
        color: root.checked ? Theme.accentInk : Theme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: root.checked ? Theme.accent : "transparent"
        border.width: root.checked ? 0 : Theme.lineWidth
        border.color: Theme.outline

        Wash {
            down: root.down
            hovered: root.hovered && !root.checked
        }
        FocusRing { // one of the button's own colour needs a gap to be seen
            anchors.margins: (root.checked ? -2 : -1) * Theme.focusWidth
            visible: root.visualFocus
        }
    }
}
