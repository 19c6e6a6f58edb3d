pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The rows of the proof ledger, newest first. A row opens what it holds.
Rectangle {
    id: root

    required property ProofLedgerViewModel ledger
    required property string productName
    property string openedId // of the row whose facts show

    signal copyAsked(string text)

    function toggle(row: ProofRow) {
        if (!row)
            return;
        root.openedId = root.openedId === row.entryId ? "" : row.entryId;
        Qt.callLater(() => rows.positionViewAtIndex(rows.currentIndex, ListView.Contain)); // qmllint disable
    }

    Connections {
        target: root.ledger

        function onKindChanged() { rows.currentIndex = 0; }
    }

    // A row that is open may be taller than the list: it is read to its end before another one is gone to.
    function scrollsInRow(distance: real): bool {
        const row = rows.currentItem as ProofRow;
        if (!row || !row.opened)
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

        objectName: "proofRows"
        anchors.fill: parent
        anchors.margins: 1
        anchors.topMargin: Theme.gap8
        anchors.bottomMargin: Theme.gap8
        clip: true
        reuseItems: true
        activeFocusOnTab: true
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        model: root.ledger.rows
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Proofs")
        Keys.onUpPressed: event => event.accepted = root.scrollsInRow(-48)
        Keys.onDownPressed: event => event.accepted = root.scrollsInRow(48)
        Keys.onReturnPressed: root.toggle(currentItem as ProofRow)
        Keys.onEnterPressed: root.toggle(currentItem as ProofRow)
        Keys.onSpacePressed: root.toggle(currentItem as ProofRow)

        T.ScrollBar.vertical: ScrollHandle {}

        delegate: ProofRow {
            width: rows.width
            ledger: root.ledger
            marked: ListView.isCurrentItem && rows.activeFocus
            opened: entryId === root.openedId
            onCopyAsked: text => root.copyAsked(text)
            onChosen: {
                rows.currentIndex = index;
                root.toggle(rows.currentItem as ProofRow);
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
        text: root.ledger.count > 0 ? qsTr("No row is of this kind.")
            : qsTr("Nothing yet. Each answer that %1 asks for leaves a row here.").arg(root.productName)
        horizontalAlignment: Text.AlignHCenter
    }
}
