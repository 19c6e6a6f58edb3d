pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// What the tools did during a reply, a line each. The last one is at work while the reply runs.
Column {
    id: root

    required property list<string> lines
    required property list<string> outcomes // "running", "finished" or "failed" for each; none when unknown
    property bool running: false

    Repeater {
        model: root.lines

        Row {
            id: line

            required property int index
            required property string modelData
            readonly property string outcome: root.outcomes[index] ?? ""
            readonly property bool atWork: root.running && outcome === "running"

            height: Math.max(Theme.controlHeight, words.implicitHeight + Theme.gap8)
            spacing: Theme.gap8

            Icon {
                objectName: "toolMark"
                anchors.verticalCenter: parent.verticalCenter
                width: 16
                height: 16
                // What was cut off in the middle has neither a tick nor a warning.
                name: line.atWork ? "spark" : line.outcome === "failed" ? "warning"
                    : line.outcome === "finished" ? "check" : "more"
                color: line.atWork ? Theme.accent : Theme.secondary
            }
            SmallText {
                id: words

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, root.width - 24)
                text: line.modelData
                elide: Text.ElideRight
                wrapMode: Text.Wrap
                maximumLineCount: 4
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}
