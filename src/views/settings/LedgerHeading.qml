import QtQuick
import Morvane

// What a ledger's columns hold.
Item {
    id: root

    required property LedgerColumns columns

    implicitHeight: Math.max(28 * Theme.zoom, place.implicitHeight + Theme.gap8)

    Heading {
        x: root.columns.timeX
        width: root.columns.timeWidth
        text: qsTr("Time")
    }
    Heading {
        id: place

        x: root.columns.placeX
        width: root.columns.placeWidth
        text: qsTr("Where it goes")
    }
    Heading {
        x: root.columns.trafficX
        width: root.columns.trafficWidth
        visible: root.columns.showsTraffic
        text: qsTr("Sent and received")
    }
    Heading {
        x: root.columns.outcomeX
        width: root.columns.outcomeWidth
        text: qsTr("Outcome")
    }
    Hairline {
        anchors.bottom: parent.bottom
        width: parent.width
    }

    component Heading: CaptionText {
        objectName: "ledgerHeading"
        anchors.verticalCenter: parent.verticalCenter
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        Accessible.role: Accessible.ColumnHeader
        Accessible.name: text
    }
}
