import QtQuick
import Morvane

// What an ability was given and what it gave back, to be read and selected. Words from outside are marked: nobody
// has checked them.
Column {
    id: root

    required property ToolLine line
    property string sent
    property string received
    property bool isFromOutside: false

    function look() {
        if (!root.visible)
            return;
        const detail = root.line.messages.toolDetail(root.line.messageId, root.line.index);
        root.sent = detail.sent;
        root.received = detail.received;
        root.isFromOutside = detail.isFromOutside;
    }

    topPadding: Theme.gap4
    leftPadding: Theme.gap24
    bottomPadding: Theme.gap8
    spacing: Theme.gap4

    onVisibleChanged: root.look()
    Component.onCompleted: root.look()

    Connections {
        target: root.line

        function onOutcomeChanged() { root.look(); }
    }
    CaptionText {
        visible: root.sent.length > 0
        text: qsTr("Sent")
    }
    ApprovalDetail {
        objectName: "toolSent"
        width: root.width - root.leftPadding
        visible: text.length > 0
        text: root.sent
    }
    Row {
        visible: root.received.length > 0
        spacing: Theme.gap4

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.isFromOutside
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
            name: "warning"
            color: Theme.warning
        }
        CaptionText {
            width: Math.min(implicitWidth, root.width - root.leftPadding - 18)
            text: root.isFromOutside ? qsTr("Came back from outside; nobody has checked it") : qsTr("Came back")
        }
    }
    ApprovalDetail {
        objectName: "toolReceived"
        width: root.width - root.leftPadding
        visible: text.length > 0
        text: root.received
    }
    CaptionText {
        visible: root.sent.length + root.received.length === 0
        text: qsTr("Nothing more is kept of this.")
    }
}
