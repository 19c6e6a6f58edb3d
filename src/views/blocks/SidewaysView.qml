import QtQuick
import QtQuick.Templates as T
import Morvane

// Shows what is wider than the reply, and scrolls it sideways only: the list scrolls up and down.
Flickable {
    id: root

    default property alias item: holder.data
    property real sidePadding: 0
    readonly property bool scrolls: contentWidth > width

    // Moves just as far as it takes to show a place.
    function reveal(left: real, right: real) {
        root.contentX = Math.max(Math.min(root.contentX, left), right + 2 * root.sidePadding - root.width, 0);
    }

    implicitHeight: holder.height + (scrolls ? Theme.gap12 : 0)
    contentWidth: holder.width + 2 * sidePadding
    contentHeight: implicitHeight
    flickableDirection: Flickable.HorizontalFlick
    boundsBehavior: Flickable.StopAtBounds
    clip: true

    T.ScrollBar.horizontal: ScrollHandle {}

    Item {
        id: holder

        x: root.sidePadding
        width: childrenRect.width
        height: childrenRect.height
    }
}
