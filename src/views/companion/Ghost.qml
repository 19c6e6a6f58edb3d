import QtQuick
import Morvane
import Morvane.ViewModels

// The ghost: its face, colour and signs tell what the application is doing. It moves a little when that
// changes; then, and while it is hidden, nothing runs.
Item {
    id: root

    required property CompanionViewModel companion
    property int size: 40
    readonly property string description: companion.bubbleText.length > 0 ? companion.bubbleText : face.description
    readonly property bool onView: visible && Window.visibility > Window.Hidden
                                   && Window.visibility !== Window.Minimized && Window.active
    readonly property bool moving: motion.running
    readonly property color skin: companion.state === Companion.State.error ? Theme.danger : Theme.ghost

    implicitWidth: size
    implicitHeight: size

    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("Ghost")
    Accessible.description: description

    GhostMotion {
        id: motion

        running: root.onView && !Theme.reduceAnimation
        gesture: root.companion.state
    }
    GhostBody {
        id: body

        skin: root.skin
    }
    GhostFace {
        id: face

        mood: root.companion.state
        blinking: motion.blinking
        ink: Theme.ghostInk
    }
    GhostSigns {
        id: signs

        mood: root.companion.state
        skin: root.skin
    }
    Sketch {
        anchors.fill: parent
        shapes: `<g transform="translate(0 ${-motion.lift})">${body.shapes}${face.shapes}</g>${signs.shapes}`
    }
    HoverHandler {
        onHoveredChanged: root.companion.isHovering = hovered
    }
}
