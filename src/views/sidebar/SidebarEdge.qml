import QtQuick
import Morvane

// The edge that the sidebar is made wider or narrower by: dragged, by the arrows once Tab led to it, and with a
// double click or Return back to its usual width. Widths are those at the usual size of everything.
Item {
    id: root

    property int value
    property int minimumValue
    property int maximumValue
    readonly property int stepSize: 10
    readonly property bool moving: drag.active
    property real wanted: 0 // while it moves

    signal chosen(int width)
    signal usualWanted()

    objectName: "sidebarEdge"
    implicitWidth: 6 * Theme.zoom
    activeFocusOnTab: true

    Accessible.role: Accessible.Slider
    Accessible.name: qsTr("Width of the list of chats")
    Accessible.focusable: true
    Accessible.onIncreaseAction: root.chosen(root.value + root.stepSize)
    Accessible.onDecreaseAction: root.chosen(root.value - root.stepSize)

    Keys.onLeftPressed: root.chosen(root.value - root.stepSize)
    Keys.onRightPressed: root.chosen(root.value + root.stepSize)
    Keys.onReturnPressed: root.usualWanted()
    Keys.onEnterPressed: root.usualWanted()
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_Home || event.key === Qt.Key_End;
        if (event.accepted)
            root.chosen(event.key === Qt.Key_Home ? root.minimumValue : root.maximumValue);
    }

    HoverHandler { cursorShape: Qt.SplitHCursor }
    TapHandler { onDoubleTapped: root.usualWanted() }
    DragHandler {
        id: drag

        property real before: 0

        target: null
        yAxis.enabled: false
        onActiveChanged: {
            if (!active)
                return root.chosen(root.wanted);
            before = root.value;
            root.wanted = before;
        }
        onTranslationChanged: if (active) root.wanted = before + translation.x / Theme.zoom
    }
    Rectangle {
        objectName: "focusRing"
        anchors.right: parent.right
        width: Theme.focusWidth
        height: parent.height
        visible: root.activeFocus && Theme.rings
        color: Theme.accent
    }
}
