import QtQuick
import Morvane
import Morvane.ViewModels

// One request to a model: when, where to and what came of it; opened also all that is kept of it.
Item {
    id: root

    required property int index
    required property string entryId
    required property string time
    required property string place
    required property string result
    required property string mark
    required property ProofLedgerViewModel ledger
    property bool marked: false
    property bool opened: false

    signal chosen()
    signal copyAsked(string text)

    objectName: "proofRow"
    implicitHeight: line.height + 2 * Theme.gap8 + (opened ? facts.height + Theme.gap16 : 0)

    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, %2. %3").arg(time).arg(place).arg(result)
    Accessible.onPressAction: chosen()

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
        height: Math.max(32 * Theme.zoom, words.height)

        HoverHandler { id: hover }
        TapHandler { onTapped: root.chosen() }

        CaptionText {
            id: when

            x: Theme.gap16
            width: 60 * Theme.textScale
            text: root.time
        }
        Icon {
            id: drawing

            x: when.x + when.width + Theme.gap12
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
            name: root.mark === "verified" ? "sealed" : root.mark === "refused" ? "warning" : "pin"
            color: root.mark === "verified" ? Theme.success : root.mark === "refused" ? Theme.warning : Theme.secondary
        }
        Column {
            id: words

            x: drawing.x + drawing.width + Theme.gap8
            width: sign.x - Theme.gap8 - x
            spacing: 2

            CaptionText {
                width: parent.width
                text: root.place
                color: Theme.text
                elide: Text.ElideMiddle
                wrapMode: Text.NoWrap
            }
            CaptionText {
                width: parent.width
                text: root.result
                maximumLineCount: 2
                elide: Text.ElideRight
            }
        }
        Icon {
            id: sign

            x: parent.width - Theme.gap16 - width
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
            name: root.opened ? "chevron-down" : "chevron-right"
            color: Theme.secondary
        }
    }
    ProofFacts {
        id: facts

        objectName: "proofDetails"
        x: words.x
        y: line.y + line.height + Theme.gap12
        width: sign.x - x
        visible: root.opened
        facts: root.opened ? root.ledger.facts(root.entryId) : []
        limits: root.opened ? root.ledger.limits(root.entryId) : []
        onCopyAsked: text => root.copyAsked(text)
    }
}
