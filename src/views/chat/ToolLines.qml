pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// What the tools did during a reply, a line each. The last one is at work while the reply runs.
Column {
    id: root

    required property MessageListModel messages
    required property string messageId
    required property list<string> lines
    required property list<string> outcomes // a ToolLineState for each; none when unknown
    property bool running: false

    Repeater {
        model: root.lines.length // the lines that stay are not built anew, so an open one stays open

        ToolLine {
            width: root.width
            messages: root.messages
            messageId: root.messageId
            words: root.lines[index] ?? ""
            outcome: root.outcomes[index] ?? ""
            atWork: root.running && outcome === "running"
        }
    }
}
