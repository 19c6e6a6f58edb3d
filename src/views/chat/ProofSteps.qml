pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The steps of a proof, as they go.
Column {
    id: root

    required property var steps // a list of { name, question, state, words }

    spacing: Theme.gap12

    Repeater {
        model: root.steps.length // a step that goes on is the same item

        Item {
            id: step

            required property int index
            readonly property var now: root.steps[index]
            readonly property string standing: now?.state ?? ""

            objectName: "proofStep"
            width: root.width
            height: words.height

            Accessible.role: Accessible.ListItem
            Accessible.name: qsTr("%1: %2").arg(name.text).arg(outcome.text)
            Accessible.description: question.text

            Icon {
                y: 1
                width: 16 * Theme.zoom
                height: 16 * Theme.zoom
                name: step.standing === "passed" ? "check" : step.standing === "running" ? "spark"
                    : step.standing === "ended" ? "close" : "more"
                color: step.standing === "passed" ? Theme.success : step.standing === "running" ? Theme.accent
                    : step.standing === "ended" ? Theme.danger : Theme.secondary
            }
            Column {
                id: words

                x: 16 * Theme.zoom + Theme.gap8
                width: parent.width - x
                spacing: 2

                SmallText {
                    id: name

                    width: parent.width
                    text: step.now?.name ?? ""
                    color: step.standing === "waiting" ? Theme.secondary : Theme.text
                    font.weight: step.standing === "running" ? Font.DemiBold : Font.Medium
                    Accessible.ignored: true
                }
                SmallText {
                    id: question

                    width: parent.width
                    text: step.now?.question ?? ""
                    Accessible.ignored: true
                }
                SmallText {
                    id: outcome

                    width: parent.width
                    text: step.now?.words ?? ""
                    color: step.standing === "passed" ? Theme.success : step.standing === "ended" ? Theme.danger : Theme.secondary
                    font.weight: Font.Medium
                    Accessible.ignored: true
                }
            }
        }
    }
}
