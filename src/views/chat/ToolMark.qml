import QtQuick
import Morvane

// How an ability stands: it turns while it is at work, in steps, and then says how that ended.
Icon {
    id: root

    required property string outcome
    required property bool atWork
    property bool isRemark: false
    readonly property bool turns: atWork && visible && !Theme.reduceAnimation && Window.visibility > Window.Hidden
                                  && Window.visibility !== Window.Minimized

    objectName: "toolMark"
    implicitWidth: 16 * Theme.zoom
    implicitHeight: 16 * Theme.zoom
    // Only what succeeded has a tick; of what was cut off in the middle nothing is known.
    name: atWork ? "working" : outcome === "finished" ? "check" : outcome === "failed" || isRemark ? "warning"
        : outcome === "declined" ? "close" : outcome === "stopped" ? "stop" : "more"
    color: atWork ? Theme.accent : Theme.secondary

    onAtWorkChanged: if (!atWork) root.rotation = 0

    Timer {
        interval: 100
        repeat: true
        running: root.turns
        onTriggered: root.rotation = (root.rotation + 45) % 360
    }
}
