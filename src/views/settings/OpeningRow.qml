import QtQuick
import Morvane

// A row of a list that says what happened; opened, also all that is known of it.
Item {
    id: root

    required property int index
    required property string entryId
    property string openedId // of the one row whose details show
    property real detailsX
    default property alias cells: line.data
    property alias unfolded: more.parts
    readonly property real signX: sign.x // where the cells and the details end
    readonly property bool isOpen: entryId === openedId
    readonly property bool needsDetails: isOpen || more.share > 0

    signal chosen()

    // The change that follows is a press.
    function press() {
        more.press();
    }

    implicitHeight: line.height + 2 * Theme.gap8 + more.implicitHeight

    Accessible.role: Accessible.ListItem
    Accessible.onPressAction: chosen()

    Rectangle {
        readonly property bool marked: root.ListView.isCurrentItem && root.ListView.view.activeFocus

        anchors.fill: parent
        anchors.leftMargin: Theme.gap8
        anchors.rightMargin: Theme.gap8
        radius: Theme.controlRadius
        color: marked ? Theme.currentWash : "transparent"

        Wash { hovered: hover.hovered && !parent.marked }
    }
    Item {
        id: line

        y: Theme.gap8
        width: parent.width
        height: Math.max(32 * Theme.zoom, childrenRect.height)

        HoverHandler { id: hover }
        TapHandler { onTapped: root.chosen() }
    }
    Icon {
        id: sign

        x: parent.width - Theme.gap16 - width
        y: line.y
        width: 16 * Theme.zoom
        height: 16 * Theme.zoom
        name: root.isOpen ? "chevron-down" : "chevron-right"
        color: Theme.secondary
    }
    Fold {
        id: more

        x: root.detailsX
        y: line.y + line.height
        width: sign.x - x
        topPadding: Theme.gap12
        open: root.isOpen
    }
}
