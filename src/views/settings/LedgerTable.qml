pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The ledger's rows under their headings.
OpeningTable {
    id: root

    headingHeight: heading.y + heading.height
    list.objectName: "ledgerRows"
    list.Accessible.name: qsTr("Connections")

    delegate: LedgerRow {
        width: root.list.width
        columns: places
        openedId: root.openedId
        onChosen: root.choose(index)
    }

    LedgerColumns {
        id: places

        width: root.list.width
    }
    LedgerHeading {
        id: heading

        x: root.list.x
        y: Theme.gap4
        width: root.list.width
        columns: places
    }
}
