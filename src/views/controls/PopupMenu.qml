import QtQuick
import QtQuick.Templates as T
import Morvane

// A small menu of PopupMenuItems.
T.Menu {
    id: root

    implicitWidth: 180 * Theme.zoom
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    padding: Theme.gap4
    margins: Theme.gap8
    enter: FadeIn {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: root.contentModel
        currentIndex: root.currentIndex
        interactive: false
    }
    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.floating
        border.width: Theme.lineWidth
        border.color: Theme.hairline
    }
}
