pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// How far the welcome is, as a dot for each step.
Row {
    id: root

    required property int count
    required property int current

    spacing: Theme.gap8

    Accessible.role: Accessible.StatusBar
    Accessible.name: qsTr("Step %1 of %2").arg(current + 1).arg(count)

    Repeater {
        model: root.count

        delegate: Rectangle {
            required property int index

            width: (index === root.current ? 24 : 8) * Theme.zoom
            height: 8 * Theme.zoom
            radius: 4 * Theme.zoom
            color: index <= root.current ? Theme.accent : Theme.hairline

            Behavior on width { Motion { duration: Theme.expand } }
        }
    }
}
