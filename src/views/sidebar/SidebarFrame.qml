import QtQuick
import Morvane

// Slides the sidebar in and out, and lets its edge be moved.
FocusScope {
    id: root

    property bool shown: true
    property bool resizable: true
    property int chosenWidth: 280 // of the person's choice, at the usual size of everything
    property real room: width // the window's

    readonly property int narrowest: 220
    readonly property int widest: 360
    readonly property int usual: 280

    signal widthChosen(int width)

    width: Math.min(root.bounded(edge.moving ? edge.wanted : chosenWidth) * Theme.zoom, Math.max(room - Theme.gap32, 0))
    x: shown ? 0 : -width
    visible: x > -width

    function bounded(width: real): int {
        return Math.round(Math.min(root.widest, Math.max(root.narrowest, width)));
    }

    Behavior on x { Motion { duration: Theme.panel } }

    SidebarEdge {
        id: edge

        anchors.right: parent.right
        height: parent.height
        z: 1
        enabled: root.resizable
        value: root.bounded(root.chosenWidth)
        minimumValue: root.narrowest
        maximumValue: root.widest
        onChosen: width => root.widthChosen(root.bounded(width))
        onUsualWanted: root.widthChosen(root.usual)
    }
}
