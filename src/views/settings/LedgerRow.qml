import QtQuick
import Morvane

// One request: when, to whom and why, how much, and how it ended; opened also everything that is known of it.
OpeningRow {
    id: root

    required property string time
    required property string host
    required property string place
    required property string feature
    required property string carried
    required property string sent
    required property string received
    required property string outcome
    required property var details // a list of { label, value }
    required property LedgerColumns columns

    objectName: "ledgerRow"
    detailsX: columns.placeX

    Accessible.name: qsTr("%1, %2, %3, %4. %5").arg(time).arg(host).arg(place).arg(feature).arg(outcome)
    Accessible.description: qsTr("Your data: %1. Sent %2, received %3.").arg(carried).arg(sent).arg(received)

    LedgerCell {
        objectName: "ledgerTime"
        x: root.columns.timeX
        width: root.columns.timeWidth
        second: root.time
    }
    LedgerCell {
        objectName: "ledgerPlace"
        x: root.columns.placeX
        width: root.columns.placeWidth
        first: root.host
        second: root.place + " · " + root.feature
    }
    LedgerCell {
        x: root.columns.trafficX
        width: root.columns.trafficWidth
        visible: root.columns.showsTraffic
        first: "↑ " + root.sent + "  ↓ " + root.received
        second: qsTr("Your data: %1").arg(root.carried)
    }
    LedgerCell {
        objectName: "ledgerOutcome"
        x: root.columns.outcomeX
        width: root.columns.outcomeWidth
        first: root.outcome
    }
    unfolded: FactRows {
        objectName: "ledgerDetails"
        facts: root.needsDetails ? root.details : []
    }

    component LedgerCell: Column {
        property alias first: firstText.text
        property alias second: secondText.text

        spacing: 2

        CaptionText {
            id: firstText

            width: parent.width
            visible: text.length > 0
            color: Theme.text
            maximumLineCount: 2
            elide: Text.ElideRight
        }
        CaptionText {
            id: secondText

            width: parent.width
            visible: text.length > 0
            elide: Text.ElideRight
            maximumLineCount: 2
        }
    }
}
