import QtQuick
import Morvane

// A line between two things, as wide as Theme.lineWidth. Where the processor draws, a rectangle's edges lie on whole
// logical pixels, so that it would be wider at some places than at others: this one is measured in those of the screen.
Item {
    id: root

    property alias color: ink.color
    readonly property bool lies: width > height

    implicitWidth: Theme.lineWidth
    implicitHeight: Theme.lineWidth

    Rectangle {
        id: ink

        width: (root.lies ? root.width : Theme.lineWidth) * Theme.pixelRatio // a layout may have rounded it
        height: (root.lies ? Theme.lineWidth : root.height) * Theme.pixelRatio
        scale: 1 / Theme.pixelRatio
        transformOrigin: Item.TopLeft
        color: Theme.hairline
    }
}
