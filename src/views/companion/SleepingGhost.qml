import QtQuick
import Morvane

// The ghost asleep. It breathes while it is in view and may move.
Item {
    id: root

    property int size: 96
    property real breath: 0 // 0 to 1
    readonly property bool breathing: visible && !Theme.reduceAnimation && Window.active

    implicitWidth: size
    implicitHeight: size

    Accessible.role: Accessible.Graphic
    Accessible.name: qsTr("Ghost")
    Accessible.description: qsTr("Asleep")

    SequentialAnimation {
        running: root.breathing
        loops: 3 // then it lies still, and nothing is drawn any more

        NumberAnimation { target: root; property: "breath"; to: 1; duration: 1600; easing.type: Easing.InOutSine }
        NumberAnimation { target: root; property: "breath"; to: 0; duration: 1600; easing.type: Easing.InOutSine }
    }
    GhostBody {
        id: body

        skin: Theme.ghost
    }
    Sketch {
        anchors.fill: parent
        shapes: `<g transform="translate(0 ${root.breath * 0.8})">${body.shapes}
            <g fill="none" stroke="${Theme.ghostInk}" stroke-linecap="round">
                <path stroke-width="1.8" d="M15 20.6c1 1.5 3.6 1.5 4.6 0M28.4 20.6c1 1.5 3.6 1.5 4.6 0"/>
                <path stroke-width="1.6" d="M22.8 28.6h2.4"/>
            </g></g>
            <g fill="none" stroke="${Theme.ghost}" stroke-linecap="round" stroke-linejoin="round"
               transform="translate(0 ${-root.breath})">
                <path stroke-width="1.6" d="M37.2 11.2h3.4l-3.4 4h3.4"/>
                <path stroke-width="1.8" d="M42.2 3.4h4.2l-4.2 5h4.2"/>
            </g>`
    }
}
