import QtQuick
import Morvane

// The mark around the row that a search led to, on the page that it stands on.
Rectangle {
    id: root

    property SettingsPage page: null
    property Item row: null // that it stands around
    readonly property real outset: Theme.gap8 - Theme.focusWidth // up to the edge of the row's card

    // Around `row`, or where that isn't shown just now around what it stands in; a page itself takes none. Its
    // first control gets the keyboard.
    function point(page: SettingsPage, row: Item) {
        let shown = row;
        while (shown && !shown.visible)
            shown = shown.parent;
        if (!shown || shown === page) {
            root.clear();
            return;
        }
        root.page = page;
        root.row = shown;
        settling.restart();
        root.place();
        const control = shown.nextItemInFocusChain(true);
        for (let around = control; around; around = around.parent) {
            if (around === shown) {
                control.forceActiveFocus(Qt.TabFocusReason);
                return;
            }
        }
    }
    function clear() {
        root.row = null;
        root.page = null;
    }
    function place() {
        if (!root.row)
            return;
        if (settling.running)
            root.page.reveal(root.row);
        const corner = root.row.mapToItem(root.page.contentItem, 0, 0);
        root.x = corner.x - root.outset;
        root.y = corner.y;
        root.width = root.row.width + 2 * root.outset;
        root.height = root.row.height;
    }

    objectName: "rowMark"
    parent: page?.contentItem ?? null
    visible: row !== null
    z: 1
    radius: Theme.controlRadius
    color: "transparent"
    border.width: Theme.focusWidth
    border.color: Theme.accent

    // A page that has just come into view is laid out once more, and the row has to stay in sight meanwhile.
    Timer {
        id: settling

        interval: 400
    }
    Connections {
        target: root.row

        function onYChanged() { root.place(); }
        function onWidthChanged() { root.place(); }
        function onHeightChanged() { root.place(); }
    }
    Connections {
        target: root.page

        function onContentHeightChanged() { Qt.callLater(root.place); } // qmllint disable
        function onMovementStarted() { settling.stop(); }
    }
}
