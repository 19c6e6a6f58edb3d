import QtQuick

// When the ghost moves: one small hop with a blink as its gesture changes. Twelve steps a second at most, and no
// timer at all once it has landed or while `running` is false.
Item {
    id: root

    property bool running: false
    property int gesture: 0
    property real lift: 0

    readonly property list<real> hop: [1.0, 2.2, 3.0, 2.4, 1.2, 0.2, -0.4, 0]
    property int step: -1
    readonly property bool blinking: step === 4 || step === 5 // as it comes down

    onGestureChanged: if (running) step = 0
    onRunningChanged: {
        root.step = -1;
        root.lift = 0;
    }

    Timer {
        interval: 84
        repeat: true
        running: root.running && root.step >= 0
        onTriggered: {
            root.lift = root.hop[root.step];
            root.step = root.step + 1 < root.hop.length ? root.step + 1 : -1;
        }
    }
}
