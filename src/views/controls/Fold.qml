import QtQuick
import Morvane

// Holds what opens and closes below the line that names it, from its upper edge down. A press takes its time; what
// else opens or closes it, as another message in the same row, does so at once.
Item {
    id: root

    property bool open: false
    property real least: 0 // px of it that are seen when it is closed
    default property alias parts: column.data
    property alias topPadding: column.topPadding
    readonly property alias whole: column.implicitHeight
    property real share: open ? 1 : 0 // of what it hides
    property bool pressed: false // until the change that this leads to has come to its end
    property bool slides: pressed

    // The change that follows is a press.
    function press() {
        root.pressed = Theme.expand > 0;
    }

    implicitHeight: Math.round(least + (Math.max(whole, least) - least) * share)
    visible: open || implicitHeight > 0
    clip: share < 1

    Behavior on share {
        enabled: root.slides

        Motion {
            duration: Theme.expand
            onRunningChanged: if (!running) root.pressed = false
        }
    }
    Column {
        id: column

        width: root.width
        opacity: Theme.reduceAnimation && !root.open ? 0 : 1

        Behavior on opacity {
            enabled: Theme.reduceAnimation

            Motion { duration: Theme.fade }
        }
    }
}
