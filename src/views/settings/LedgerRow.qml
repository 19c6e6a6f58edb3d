import QtQuick
import Morvane

// One request: when, to whom and why, how much, and how it ended; opened also everything that is known of it.
Item {
    id: root

    required property int index
    required property string entryId
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
    property bool marked: false
    property bool opened: false

    signal chosen()

    objectName: "ledgerRow"
    implicitHeight: Math.max(48 * Theme.zoom, line.height + 2 * Theme.gap8) + (opened ? more.height + Theme.gap12 : 0)

    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, %2, %3, %4. %5").arg(time).arg(host).arg(place).arg(feature).arg(outcome)
    Accessible.description: qsTr("Your data: %1. Sent %2, received %3.").arg(carried).arg(sent).arg(received)
    Accessible.onPressAction: chosen()

    HoverHandler { id: hover }
    TapHandler { onTapped: root.chosen() }

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.gap8
        anchors.rightMargin: Theme.gap8
        radius: Theme.controlRadius
        color: root.marked ? Theme.currentWash : "transparent"

        Wash { hovered: hover.hovered && !root.marked }
    }
    Item {
        id: line

        y: Theme.gap8
        width: parent.width
        height: childrenRect.height

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
        Icon {
            x: root.columns.markX
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
            name: root.opened ? "chevron-down" : "chevron-right"
            color: Theme.secondary
        }
    }
    FactRows {
        id: more

        objectName: "ledgerDetails"
        x: root.columns.placeX
        y: line.y + line.height + Theme.gap12
        width: root.columns.markX - x
        visible: root.opened
        facts: root.opened ? root.details : []
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
