pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The messages of a chat. While it follows, its end stays in view; the first step up lets go.
ListView {
    id: root

    required property MessageListModel messages
    property real column: Theme.columnWidth
    property bool responding: false
    property bool canRead: false // replies aloud
    property string readingId // of the reply that is being read
    property bool chosen: false // all of it, to be copied
    property int lastQuestion: -1 // its row
    // The end stays in view as replies grow.
    property bool following: true
    // A message was sent since the chat was opened: its turn begins in the upper third of the view.
    property bool makesRoom: false
    // Empty room at the end for such a turn. It shrinks as the answer grows, so nothing above the answer moves
    // until the room is used up.
    property real room: 0
    property real movedFrom: 0
    property var held: null // the place that was gone to, which a new width doesn't lose
    property real heldY: 0 // where that was: elsewhere the person has moved since
    property bool waits: false // for its first size, to go there
    readonly property real endY: originY + contentHeight + bottomMargin - height
    readonly property real gapToEnd: endY - contentY

    signal copyAsked(string text)
    signal readAsked(string messageId)
    signal linkAsked(string address)
    signal proofAsked(string messageId)
    signal continueAsked(string messageId)
    signal retryAsked()
    signal stopAsked()
    signal regenerateAsked()
    signal versionAsked(string messageId, int distance)
    signal editAsked(string messageId)
    signal deleteAsked(string messageId)

    // Once this moment's changes are all in, and before the next frame.
    function settle() {
        Qt.callLater(root.keepEnd); // qmllint disable
    }
    function goToEnd() {
        root.following = true;
        root.keepEnd();
    }
    function keepEnd() {
        if (root.makesRoom)
            root.measureRoom();
        if (!root.following || root.count === 0)
            return;
        root.positionViewAtEnd(); // lays the last rows out, so that the end is known and not estimated
        root.contentY = Math.max(root.originY - root.topMargin, root.endY);
    }
    // The question is the last row, or the one above its answer. Scrolled out of sight it can't be measured,
    // and the room stays as it is.
    function measureRoom() {
        const last = root.itemAtIndex(root.count - 1) as MessageRow;
        const question = last?.isUser ? last : root.itemAtIndex(root.count - 2);
        if (question)
            root.room = Math.max(0, root.height * 2 / 3 - (root.originY + root.contentHeight - question.y));
    }
    function scrollBy(distance: real) {
        root.contentY = Math.max(root.originY - root.topMargin, Math.min(root.contentY + distance, root.endY));
        root.following = distance > 0 && root.gapToEnd <= 64;
    }
    // What stands at the top of the view, as a row and how far it is scrolled out.
    function place(): var {
        const row = root.indexAt(root.width / 2, root.contentY + root.topMargin);
        const item = root.itemAtIndex(row);
        return { following: root.following || !item, row: row, offset: item ? root.contentY - item.y : 0 };
    }
    function goTo(place: var) {
        if (place.following || place.row >= root.count)
            return root.goToEnd();
        root.following = false;
        root.waits = root.height <= 0;
        root.positionViewAtIndex(place.row, ListView.Beginning);
        const item = root.itemAtIndex(place.row);
        if (item)
            root.contentY = item.y + place.offset;
        root.held = place;
        root.heldY = root.contentY;
    }
    function bringTurnUp() {
        root.makesRoom = true;
        root.following = true;
        root.settle();
    }
    function goBack() {
        if (root.held && (root.waits || root.contentY === root.heldY))
            root.goTo(root.held);
    }
    function startOver() {
        root.held = null;
        root.waits = false;
        root.makesRoom = false;
        root.following = true;
        root.settle();
    }

    model: messages
    reuseItems: true
    currentIndex: -1
    keyNavigationEnabled: false
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    spacing: Theme.gap8
    topMargin: Theme.gap8
    bottomMargin: Theme.gap8 + (makesRoom ? room : 0)
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
    onContentYChanged: if (moving) following = contentY > movedFrom && gapToEnd <= 64
    onMovementEnded: root.following = root.contentY >= root.movedFrom && root.gapToEnd <= 64
    onContentHeightChanged: root.settle()
    onHeightChanged: {
        root.settle();
        if (root.waits)
            Qt.callLater(root.goBack); // qmllint disable
    }
    onWidthChanged: if (root.held) Qt.callLater(root.goBack) // qmllint disable
    onCountChanged: root.settle()

    delegate: MessageRow {
        width: root.width
        messages: root.messages
        column: root.column
        isLast: index === root.count - 1
        isLastQuestion: index === root.lastQuestion
        responding: root.responding
        canRead: root.canRead
        reading: root.readingId === messageId
        chosen: root.chosen
        onCopyAsked: text => root.copyAsked(text)
        onLinkAsked: address => root.linkAsked(address)
        onReadAsked: root.readAsked(messageId)
        onProofAsked: root.proofAsked(messageId)
        onContinueAsked: messageId => root.continueAsked(messageId)
        onRetryAsked: root.retryAsked()
        onStopAsked: root.stopAsked()
        onRegenerateAsked: root.regenerateAsked()
        onVersionAsked: distance => root.versionAsked(messageId, distance)
        onEditAsked: root.editAsked(messageId)
        onDeleteAsked: root.deleteAsked(messageId)
    }
}
