import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A tool asks before it acts. The harmless answer has the focus, and no answer counts in the first half
// second, so that a key or a click meant for something else can't give one.
Rectangle {
    id: root

    required property ChatViewModel chat
    readonly property string verb: chat.approval.verb
    readonly property string detail: chat.approval.detail
    readonly property string footnote: chat.approval.footnote
    readonly property bool armed: !guard.running

    signal answered() // by the person or by the clock: the card is gone

    function begin() {
        guard.restart();
        declineButton.forceActiveFocus(Qt.TabFocusReason);
    }

    objectName: "approval"
    implicitHeight: content.implicitHeight + 2 * Theme.gap16
    radius: Theme.cardRadius
    color: Theme.card
    border.width: 1
    border.color: Theme.outline

    Accessible.role: Accessible.AlertMessage
    Accessible.name: verb + " " + detail + " " + footnote
    Keys.onEscapePressed: root.chat.decline()

    onVisibleChanged: visible ? root.begin() : root.answered()
    Component.onCompleted: if (visible) root.begin()

    Timer {
        id: guard

        interval: 500
    }
    ColumnLayout {
        id: content

        anchors.fill: parent
        anchors.margins: Theme.gap16
        spacing: Theme.gap12

        PlainText {
            Layout.fillWidth: true
            text: root.verb
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        ApprovalDetail {
            Layout.fillWidth: true
            visible: text.length > 0
            text: root.detail
        }
        CaptionText {
            Layout.fillWidth: true
            visible: text.length > 0
            text: root.footnote
        }
        CountdownBar {
            Layout.fillWidth: true
            deadline: root.chat.approvalDeadline
        }
        Flow {
            Layout.fillWidth: true
            spacing: Theme.gap8
            layoutDirection: Qt.RightToLeft

            PushButton {
                objectName: "allow"
                text: qsTr("Allow")
                rank: PushButton.Primary
                onClicked: if (root.armed) root.chat.approve()
            }
            PushButton {
                objectName: "allowForChat"
                visible: root.chat.approval.offersChatWideYes
                text: qsTr("Allow for this chat")
                onClicked: if (root.armed) root.chat.approveForChat()
            }
            PushButton {
                id: declineButton

                objectName: "decline"
                text: qsTr("Decline")
                onClicked: if (root.armed) root.chat.decline()
            }
        }
    }
}
