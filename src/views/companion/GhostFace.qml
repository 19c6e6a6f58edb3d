import QtQuick
import Morvane.ViewModels

// Eyes and mouth, as shapes on a square of 48 units.
QtObject {
    id: root

    required property int mood // a Companion.State
    property bool blinking: false
    property color ink

    readonly property string description: [
        qsTr("Resting"), qsTr("Pleased to see you"), qsTr("Listening"), qsTr("Thinking"), qsTr("Replying"),
        qsTr("Something is new"), qsTr("Something went wrong")
    ][mood]

    readonly property bool wide: mood === Companion.State.listening || mood === Companion.State.notification
    readonly property string openEyes: mood === Companion.State.thinking ? pair(19.2, 19.4, 2.2, 3)
        : wide ? pair(17.6, 21, 2.8, 3.7) : pair(17.6, 21, 2.2, 3)
    readonly property string happyEyes: "M15.2 22.6c.8-2.6 4-2.6 4.8 0M28 22.6c.8-2.6 4-2.6 4.8 0"
    readonly property string crossedEyes: "M15.4 18.8l4.4 4.4m0-4.4l-4.4 4.4M28.2 18.8l4.4 4.4m0-4.4l-4.4 4.4"
    readonly property string closedEyes: "M15.4 21.2h4.4M28.2 21.2h4.4"
    readonly property string shutEyes: mood === Companion.State.error ? crossedEyes
        : mood === Companion.State.hover ? happyEyes : closedEyes
    readonly property bool eyesAreOpen: !blinking && mood !== Companion.State.hover && mood !== Companion.State.error
    readonly property string mouth: [
        "M21.4 29c1.4 1.5 3.8 1.5 5.2 0",
        "M20 28.2c2 2.8 6 2.8 8 0",
        "M22.6 29.2h2.8",
        "M22 29.6c1-.9 2.4-.9 4 .2",
        "M24 27.4c3.4 0 3.4 4.6 0 4.6c-3.4 0-3.4-4.6 0-4.6",
        "M21.4 28.6c1.4 1.8 3.8 1.8 5.2 0",
        "M20.6 30.8c1.6-2.2 5.2-2.2 6.8 0"
    ][mood]

    function ellipse(x: real, y: real, rx: real, ry: real): string {
        return `M${x - rx} ${y}a${rx} ${ry} 0 1 0 ${2 * rx} 0a${rx} ${ry} 0 1 0 ${-2 * rx} 0`;
    }
    function pair(x: real, y: real, rx: real, ry: real): string {
        return ellipse(x, y, rx, ry) + ellipse(x + 12.8, y, rx, ry);
    }

    readonly property string shapes: `
        <g stroke="none" fill="${root.ink}"><path d="${root.eyesAreOpen ? root.openEyes : ""}"/></g>
        <g stroke="${root.ink}" stroke-linecap="round" fill="none">
            <path stroke-width="2" d="${root.eyesAreOpen ? "" : root.shutEyes}"/>
            <path stroke-width="1.8" fill="${root.mood === Companion.State.speaking ? root.ink : "none"}"
                  d="${root.mouth}"/>
        </g>`
}
