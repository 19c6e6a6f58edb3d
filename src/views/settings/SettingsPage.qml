import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// A page of the settings: a title, then cards in one column.
Flickable {
    id: root

    property string title
    default property alias cards: column.data

    property bool followsEnd: false // while what has come into view there finds its place

    function reveal(item: Item) {
        const y = item.mapToItem(root.contentItem, 0, 0).y;
        root.contentY = Math.max(0, Math.min(y - Theme.gap24, root.contentHeight - root.height));
    }
    function showEnd() {
        root.contentY = Math.max(0, root.contentHeight - root.height);
    }

    onContentHeightChanged: if (followsEnd) showEnd()
    contentHeight: column.implicitHeight + 2 * Theme.gap24
    boundsBehavior: Flickable.StopAtBounds
    clip: true

    T.ScrollBar.vertical: ScrollHandle {}

    ColumnLayout {
        id: column

        x: Math.max(Theme.gap24, (root.width - width) / 2)
        y: Theme.gap24
        width: Math.min(560 * Theme.zoom, root.width - 2 * Theme.gap24)
        spacing: Theme.gap16

        TitleText { text: root.title }
    }
}
