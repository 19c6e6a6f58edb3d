pragma ComponentBehavior: Bound

import QtQuick
import Morvane

// Three dots while a reply is on its way, with the stage in words beside them when it takes long, and a way to stop
// it when it stands still.
Row {
    id: root

    required property string words
    property bool stalled: false

    signal stopAsked()

    spacing: Theme.gap12
    Accessible.role: Accessible.Indicator
    Accessible.name: words.length > 0 ? words : qsTr("Replying")

    Row {
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.gap4

        Repeater {
            model: 3

            Rectangle {
                id: dot

                required property int index

                width: 7 * Theme.zoom
                height: 7 * Theme.zoom
                radius: 3.5 * Theme.zoom
                color: Theme.secondary
                opacity: Theme.reduceAnimation ? 0.7 : 0.3

                SequentialAnimation on opacity {
                    running: !Theme.reduceAnimation && root.visible
                    loops: Animation.Infinite

                    PauseAnimation { duration: dot.index * 200 }
                    NumberAnimation { to: 1; duration: 300; easing.type: Easing.OutCubic }
                    NumberAnimation { to: 0.3; duration: 300; easing.type: Easing.OutCubic }
                    PauseAnimation { duration: 600 - dot.index * 200 }
                }
            }
        }
    }
    SmallText {
        anchors.verticalCenter: parent.verticalCenter
        visible: text.length > 0
        text: root.words
    }
    PushButton {
        objectName: "stopStalled"
        anchors.verticalCenter: parent.verticalCenter
        visible: root.stalled
        text: qsTr("Stop")
        onClicked: root.stopAsked()
    }
}
