import QtQuick
import QtQuick.Templates as T
import Morvane

// Rows of which one at a time shows its details, the newest first.
Rectangle {
    id: root

    property alias model: rows.model
    property alias delegate: rows.delegate
    readonly property alias count: rows.count
    readonly property alias list: rows
    property real headingHeight: Theme.gap8
    property string emptyText
    property string openedId // of the row whose details show

    function choose(index: int) {
        rows.currentIndex = index;
        root.toggle();
    }

    // The current row opens or closes, and the one that was open makes room.
    function toggle() {
        root.follow();
        const chosen = rows.currentItem as OpeningRow;
        if (!chosen)
            return;
        const items = rows.contentItem.children;
        for (let i = 0; i < items.length; ++i) {
            const row = items[i] as OpeningRow;
            if (row && (row === chosen || row.isOpen))
                row.press();
        }
        root.openedId = chosen.isOpen ? "" : chosen.entryId;
    }

    // A list keeps the row in sight that was made the current one, also while it grows, until the person scrolls.
    function follow() {
        const index = rows.currentIndex;
        rows.currentIndex = -1;
        rows.currentIndex = index;
    }

    // A row that is open may be taller than the list: it is read to its end before another one is gone to.
    function scrollsInRow(distance: real): bool {
        const row = rows.currentItem as OpeningRow;
        if (!row || !row.isOpen)
            return false;
        const hidden = distance > 0 ? row.y + row.height - rows.contentY - rows.height : rows.contentY - row.y;
        if (hidden <= 0)
            return false;
        rows.contentY += Math.sign(distance) * Math.min(Math.abs(distance), hidden);
        return true;
    }

    radius: Theme.cardRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    ListView {
        id: rows

        anchors.fill: parent
        anchors.margins: 1
        anchors.topMargin: root.headingHeight
        anchors.bottomMargin: Theme.gap8
        clip: true
        reuseItems: true
        activeFocusOnTab: true
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Keys.onUpPressed: event => event.accepted = root.scrollsInRow(-48)
        Keys.onDownPressed: event => event.accepted = root.scrollsInRow(48)
        Keys.onReturnPressed: root.toggle()
        Keys.onEnterPressed: root.toggle()
        Keys.onSpacePressed: root.toggle()

        T.ScrollBar.vertical: ScrollHandle {}
    }
    FocusRing {
        radius: Theme.cardRadius + Theme.focusWidth
        visible: rows.activeFocus
    }
    SmallText {
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.gap24
        visible: rows.count === 0
        text: root.emptyText
        horizontalAlignment: Text.AlignHCenter
    }
}
