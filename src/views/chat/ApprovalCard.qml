import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A tool asks before it acts. No answer counts in the first half second, so that a key or a click meant for
// something else can't give one. The harmless answer has the focus if the message field had it and rests: words
// that are being written never land here.
Rectangle {
    id: root

    required property ChatViewModel chat
    required property Composer composer
    readonly property string verb: chat.approval.verb
    readonly property string detail: chat.approval.detail
    readonly property string footnote: chat.approval.footnote
    readonly property bool armed: !guard.running

    function begin() {
        guard.restart();
        if (root.composer.focused && !root.composer.composing && !root.chat.isWriting())
            declineButton.forceActiveFocus(Qt.TabFocusReason);
    }

    objectName: "approval"
    implicitHeight: content.implicitHeight + 2 * Theme.gap16
    radius: Theme.cardRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.outline

    Accessible.role: Accessible.Notification
    Accessible.name: verb + " " + detail + " " + footnote

    onVisibleChanged: if (visible) root.begin()
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
        // In a row at the right, or below each other where that is too wide; in either the harmless one is first.
        GridLayout {
            readonly property bool fits: declineButton.implicitWidth + chatButton.implicitWidth
                + allowButton.implicitWidth + 2 * Theme.gap8 <= content.width

            Layout.alignment: Qt.AlignRight
            Layout.fillWidth: !fits
            columns: fits ? 3 : 1
            columnSpacing: Theme.gap8
            rowSpacing: Theme.gap8

            PushButton {
                id: declineButton

                objectName: "decline"
                Layout.fillWidth: true
                text: qsTr("Don't Allow")
                onClicked: if (root.armed) root.chat.decline()
            }
            PushButton {
                id: chatButton

                objectName: "allowForChat"
                Layout.fillWidth: true
                visible: root.chat.approval.offersChatWideYes
                text: qsTr("Allow in This Chat")
                onClicked: if (root.armed) root.chat.approveForChat()
            }
            PushButton {
                id: allowButton

                objectName: "allow"
                Layout.fillWidth: true
                text: qsTr("Allow Once")
                rank: PushButton.Primary
                onClicked: if (root.armed) root.chat.approve()
            }
        }
    }
}
