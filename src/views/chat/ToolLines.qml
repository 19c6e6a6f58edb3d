pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// What the tools did during a reply, a line each. The last one is at work while the reply runs.
Column {
    id: root

    required property list<string> lines
    property bool running: false

    Repeater {
        model: root.lines

        Row {
            id: line

            required property int index
            required property string modelData
            readonly property bool failed: modelData.startsWith("Couldn't")
            readonly property bool atWork: root.running && index === root.lines.length - 1
                && modelData.endsWith("…")

            height: Theme.controlHeight
            spacing: Theme.gap8

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                width: 16
                height: 16
                name: line.atWork ? "spark" : line.failed ? "warning" : "check"
                color: line.atWork ? Theme.accent : Theme.secondary
            }
            SmallText {
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, root.width - 24)
                text: line.modelData
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
    }
}
