import QtQuick
import QtQuick.Shapes
import Morvane
import Morvane.ViewModels

// What stands beside the ghost: waves while it listens, a thought while it thinks, lines while it speaks, a
// dot when something is new. On a square of 48 units.
Shape {
    id: root

    required property int mood // a Companion.State
    property color skin

    readonly property bool isNews: mood === Companion.State.notification
    readonly property string strokes: mood === Companion.State.listening
        ? "M42 17.5c2.4 2.8 2.4 7.2 0 10M6 17.5c-2.4 2.8-2.4 7.2 0 10"
        : mood === Companion.State.speaking ? "M42.2 26.4l3.4-1.2M42.4 31h3.6M42.2 35.4l3.2 1.4" : "M0 0"
    readonly property string dots: isNews ? dot(40, 9, 5.2)
        : mood === Companion.State.thinking ? dot(37.4, 11.4, 1.5) + dot(41, 7.6, 2.1) + dot(44.6, 2.9, 2.9) : "M0 0"

    function dot(x: real, y: real, r: real): string {
        return `M${x - r} ${y}a${r} ${r} 0 1 0 ${2 * r} 0a${r} ${r} 0 1 0 ${-2 * r} 0`;
    }

    width: 48
    height: 48

    ShapePath {
        strokeColor: root.strokes.length > 4 ? root.skin : "transparent"
        strokeWidth: 2
        fillColor: "transparent"
        capStyle: ShapePath.RoundCap

        PathSvg { path: root.strokes }
    }
    ShapePath {
        strokeColor: root.isNews ? Theme.page : "transparent"
        strokeWidth: 1.5
        fillColor: root.isNews ? Theme.accent : root.skin

        PathSvg { path: root.dots }
    }
}
