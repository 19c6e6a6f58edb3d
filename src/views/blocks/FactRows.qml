pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// Labels and their values, a line each.
Column {
    id: root

    required property var facts // a list of { label, value }

    width: parent?.width ?? 0
    spacing: Theme.gap8

    Repeater {
        model: root.facts

        Row {
            id: fact

            required property var modelData

            width: root.width
            spacing: Theme.gap16

            SmallCardText {
                id: label

                width: Math.round(fact.width * 0.36)
                text: fact.modelData.label
            }
            SmallCardText {
                width: fact.width - label.width - fact.spacing
                text: fact.modelData.value
                color: Theme.text
                font.weight: Font.Medium
            }
        }
    }
}
