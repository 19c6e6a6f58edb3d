import QtQuick
import Morvane

// Empty room at the end of the list, so that a turn just begun stands in the upper third of the view. It
// shrinks as the answer grows, so nothing above the answer moves until the room is used up.
Item {
    id: root

    required property ListView list
    required property bool wanted
    property real room: 0

    // The question is the last row, or the one above its answer. While it is scrolled out of sight there is
    // no delegate to measure, and the room stays as it is.
    function measure() {
        const last = root.list.itemAtIndex(root.list.count - 1) as MessageRow;
        const question = last?.isUser ? last : root.list.itemAtIndex(root.list.count - 2);
        if (question)
            root.room = Math.max(0, root.list.height * 2 / 3 - (root.y - question.y));
    }

    width: list.width
    height: Theme.gap8 + (wanted ? room : 0)

    onYChanged: measure()
    onWantedChanged: measure()

    Connections {
        target: root.list

        function onHeightChanged() { root.measure(); }
    }
}
