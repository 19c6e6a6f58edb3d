pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane

// The ledger's rows, newest first.
Rectangle {
    id: root

    property alias model: rows.model
    required property string productName

    radius: Theme.cardRadius
    color: Theme.card
    border.width: 1
    border.color: Theme.hairline

    ListView {
        id: rows

        anchors.fill: parent
        anchors.margins: 1
        anchors.topMargin: Theme.gap8
        anchors.bottomMargin: Theme.gap8
        clip: true
        reuseItems: true
        activeFocusOnTab: true
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Connections")

        T.ScrollBar.vertical: ScrollHandle {}

        delegate: LedgerRow {
            width: rows.width
            marked: ListView.isCurrentItem && rows.activeFocus
            onChosen: rows.currentIndex = index
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
        text: qsTr("Nothing yet. Connections appear here as %1 makes them.").arg(root.productName)
        horizontalAlignment: Text.AlignHCenter
    }
}
