pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// What a row of the proof ledger holds, each with a plain sentence and what is to be copied; below it, in the same
// size, what it doesn't show.
Column {
    id: root

    property var facts: [] // a list of { label, value, explanation, bytes }
    property var limits: [] // texts

    signal copyAsked(string text)

    spacing: Theme.gap12

    Repeater {
        model: root.facts

        Item {
            id: fact

            required property var modelData
            readonly property bool holdsBytes: modelData.bytes.length > 0

            objectName: "proofFact"
            width: root.width
            height: words.height

            Accessible.role: Accessible.ListItem
            Accessible.name: qsTr("%1: %2").arg(modelData.label).arg(modelData.value)
            Accessible.description: modelData.explanation

            Column {
                id: words

                width: parent.width - (fact.holdsBytes ? 28 + Theme.gap8 : 0)
                spacing: 2

                SmallText {
                    id: label

                    width: parent.width
                    text: fact.modelData.label
                    Accessible.ignored: true
                }
                SmallText {
                    width: parent.width
                    text: fact.modelData.value
                    color: Theme.text
                    font.weight: Font.Medium
                    font.family: fact.holdsBytes ? Theme.monoFamily : label.font.family
                    wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                    Accessible.ignored: true
                }
                SmallText {
                    width: parent.width
                    visible: text.length > 0
                    text: fact.modelData.explanation
                    Accessible.ignored: true
                }
            }
            CopyButton {
                objectName: "copyProofBytes"
                anchors.right: parent.right
                visible: fact.holdsBytes
                subject: fact.modelData.label
                onClicked: root.copyAsked(fact.modelData.bytes)
            }
        }
    }
    ProofHeading {
        visible: root.limits.length > 0
        text: qsTr("What this does not show")
    }
    Repeater {
        model: root.limits

        SmallText {
            required property string modelData

            objectName: "proofLimit"
            width: root.width
            text: modelData
            color: Theme.text
            Accessible.role: Accessible.ListItem
            Accessible.name: text
        }
    }
}
