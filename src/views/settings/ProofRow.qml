import QtQuick
import Morvane
import Morvane.ViewModels

// One request to a model: when, where to and what came of it; opened also all that is kept of it.
OpeningRow {
    id: root

    required property string time
    required property string place
    required property string result
    required property string mark
    required property ProofLedgerViewModel ledger

    signal copyAsked(string text)

    objectName: "proofRow"
    detailsX: words.x

    Accessible.name: qsTr("%1, %2. %3").arg(time).arg(place).arg(result)

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
        width: root.signX - Theme.gap8 - x
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
    unfolded: ProofFacts {
        objectName: "proofDetails"
        width: parent?.width ?? 0
        facts: root.needsDetails ? root.ledger.facts(root.entryId) : []
        limits: root.needsDetails ? root.ledger.limits(root.entryId) : []
        onCopyAsked: text => root.copyAsked(text)
    }
}
