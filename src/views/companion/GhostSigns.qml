import QtQuick
import Morvane
import Morvane.ViewModels

// What stands beside the ghost: waves while it listens, a thought while it thinks, lines while it speaks, a
// dot when something is new. As shapes on a square of 48 units.
QtObject {
    id: root

    required property int mood // a Companion.State
    property color skin

    readonly property bool isNews: mood === Companion.State.notification
    readonly property string strokes: mood === Companion.State.listening
        ? "M42 17.5c2.4 2.8 2.4 7.2 0 10M6 17.5c-2.4 2.8-2.4 7.2 0 10"
        : mood === Companion.State.speaking ? "M42.2 26.4l3.4-1.2M42.4 31h3.6M42.2 35.4l3.2 1.4" : ""
    readonly property string dots: isNews ? dot(40, 9, 5.2)
        : mood === Companion.State.thinking ? dot(37.4, 11.4, 1.5) + dot(41, 7.6, 2.1) + dot(44.6, 2.9, 2.9) : ""

    function dot(x: real, y: real, r: real): string {
        return `M${x - r} ${y}a${r} ${r} 0 1 0 ${2 * r} 0a${r} ${r} 0 1 0 ${-2 * r} 0`;
    }

    readonly property string shapes: `
        <path fill="none" stroke="${root.skin}" stroke-width="2" stroke-linecap="round" d="${root.strokes}"/>
        <path fill="${root.isNews ? Theme.accent : root.skin}" stroke="${root.isNews ? Theme.page : "none"}"
              stroke-width="1.5" d="${root.dots}"/>`
}
