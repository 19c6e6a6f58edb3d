pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// The ghost in each of its states, side by side.
Window {
    id: root

    property list<QtObject> companions
    property bool dark: false

    width: 860
    height: 170
    color: Theme.page

    Binding { target: Theme; property: "dark"; value: root.dark }

    Row {
        anchors.centerIn: parent
        spacing: 16

        Repeater {
            model: root.companions

            Column {
                id: cell

                required property QtObject modelData

                spacing: 12

                Ghost {
                    anchors.horizontalCenter: parent.horizontalCenter
                    size: 96
                    companion: cell.modelData
                }
                CaptionText {
                    width: 104
                    horizontalAlignment: Text.AlignHCenter
                    text: ["idle", "hover", "listening", "thinking", "speaking", "notification", "error"][cell.modelData.state]
                }
            }
        }
    }
}
