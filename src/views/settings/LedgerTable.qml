pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane

// The ledger's rows, newest first, under their headings. A row opens its details.
Rectangle {
    id: root

    property alias model: rows.model
    property alias count: rows.count
    property string emptyText
    property string openedId // of the row whose details show

    function toggle(entryId: string) {
        root.openedId = root.openedId === entryId ? "" : entryId;
        Qt.callLater(() => rows.positionViewAtIndex(rows.currentIndex, ListView.Contain)); // qmllint disable
    }

    radius: Theme.cardRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    LedgerColumns {
        id: places

        width: rows.width
    }
    LedgerHeading {
        id: heading

        x: rows.x
        y: Theme.gap4
        width: rows.width
        columns: places
    }
    ListView {
        id: rows

        objectName: "ledgerRows"
        anchors.fill: parent
        anchors.margins: 1
        anchors.topMargin: heading.y + heading.height
        anchors.bottomMargin: Theme.gap8
        clip: true
        reuseItems: true
        activeFocusOnTab: true
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Connections")
        Keys.onReturnPressed: if (currentItem) root.toggle((currentItem as LedgerRow).entryId)
        Keys.onEnterPressed: if (currentItem) root.toggle((currentItem as LedgerRow).entryId)
        Keys.onSpacePressed: if (currentItem) root.toggle((currentItem as LedgerRow).entryId)

        T.ScrollBar.vertical: ScrollHandle {}

        delegate: LedgerRow {
            width: rows.width
            columns: places
            marked: ListView.isCurrentItem && rows.activeFocus
            opened: entryId === root.openedId
            onChosen: {
                rows.currentIndex = index;
                root.toggle(entryId);
            }
        }
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
