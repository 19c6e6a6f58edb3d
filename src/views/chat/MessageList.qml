pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane

// The messages of a chat. While it follows, its end stays in view; the first step up lets go.
ListView {
    id: root

    property real column: Theme.columnWidth
    // The end stays in view as replies grow.
    property bool following: true
    readonly property real gapToEnd: originY + contentHeight - height - contentY
    // A message was sent since the chat was opened: its turn stands a third down the view.
    property bool makesRoom: false
    property real movedFrom: 0

    signal copyAsked(string text)
    signal continueAsked(string messageId)

    function goToEnd() {
        root.following = true;
        root.positionViewAtEnd();
    }
    function keepEnd() {
        if (root.following && root.count > 0)
            root.positionViewAtEnd();
    }
    function scrollBy(distance: real) {
        const last = Math.max(root.originY, root.originY + root.contentHeight - root.height);
        root.contentY = Math.min(Math.max(root.contentY + distance, root.originY), last);
        root.following = distance > 0 && root.gapToEnd <= 64;
    }
    // A turn has begun: its question goes to the upper third, its answer fills the room below.
    function bringTurnUp() {
        root.makesRoom = true;
        root.following = true;
        settle.start();
    }
    function startOver() {
        root.makesRoom = false;
        root.following = true;
        settle.start();
    }

    reuseItems: true
    currentIndex: -1
    keyNavigationEnabled: false
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    spacing: Theme.gap8
    topMargin: Theme.gap8
    cacheBuffer: 400

    Accessible.role: Accessible.List
    Accessible.name: qsTr("Messages")

    T.ScrollBar.vertical: ScrollHandle {
        onPressedChanged: root.following = !pressed && root.gapToEnd <= 64
    }

    onMovementStarted: {
        root.movedFrom = root.contentY;
        root.following = false;
    }
    onMovementEnded: root.following = root.contentY >= root.movedFrom && root.gapToEnd <= 64
    onContentHeightChanged: settle.start()
    onHeightChanged: settle.start()

    // Several changes of one moment move the view once.
    Timer {
        id: settle

        interval: 0
        onTriggered: root.keepEnd()
    }

    delegate: MessageRow {
        width: root.width
        column: root.column
        isLast: index === root.count - 1
        onCopyAsked: text => root.copyAsked(text)
        onContinueAsked: messageId => root.continueAsked(messageId)
    }
    footer: TurnRoom {
        list: root
        wanted: root.makesRoom
    }
}
