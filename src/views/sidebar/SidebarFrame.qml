import QtQuick
import Morvane

// Slides the sidebar in and out, and lets its edge be dragged.
FocusScope {
    id: root

    property bool shown: true
    property bool resizable: true

    width: 280
    x: shown ? 0 : -width
    visible: x > -width

    Behavior on x { NumberAnimation { duration: Theme.panel; easing.type: Easing.OutCubic } }

    Item {
        anchors.right: parent.right
        width: 6
        height: parent.height
        z: 1
        enabled: root.resizable

        HoverHandler { cursorShape: Qt.SplitHCursor }
        DragHandler {
            property real widthBefore: 0

            target: null
            yAxis.enabled: false
            onActiveChanged: widthBefore = root.width
            onTranslationChanged: if (active) root.width = Math.min(360, Math.max(220, widthBefore + translation.x))
        }
    }
}
