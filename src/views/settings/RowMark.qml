import QtQuick
import Morvane

// The mark around the row that a search led to, on the page that it stands on.
Rectangle {
    id: root

    // Around `row`, or where that isn't shown just now around what it stands in; a page itself takes none. Its
    // first control gets the keyboard.
    function point(page: SettingsPage, row: Item) {
        let shown = row;
        while (shown && !shown.visible)
            shown = shown.parent;
        if (!shown || shown === page)
            return root.clear();
        page.reveal(shown);
        root.parent = page.contentItem;
        const corner = shown.mapToItem(page.contentItem, 0, 0);
        root.x = corner.x - Theme.gap4;
        root.y = corner.y;
        root.width = shown.width + 2 * Theme.gap4;
        root.height = shown.height;
        root.visible = true;
        const control = shown.nextItemInFocusChain(true);
        for (let around = control; around; around = around.parent) {
            if (around === shown)
                return control.forceActiveFocus(Qt.TabFocusReason);
        }
    }
    function clear() {
        root.visible = false;
    }

    objectName: "rowMark"
    visible: false
    z: 1
    radius: Theme.controlRadius
    color: "transparent"
    border.width: Theme.focusWidth
    border.color: Theme.accent
}
