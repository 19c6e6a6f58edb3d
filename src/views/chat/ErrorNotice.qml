import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What went wrong in one sentence, the server's own words, what may help, and the one thing to do about it.
Rectangle {
    id: root

    required property ChatViewModel chat
    required property ShellViewModel shell
    readonly property string message: chat.banner.message
    readonly property string suggestion: chat.banner.suggestion
    readonly property string quotation: chat.banner.quotation

    implicitHeight: content.implicitHeight + 2 * Theme.gap12
    radius: Theme.panelRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    Accessible.role: Accessible.Notification
    Accessible.name: message + (quotation.length > 0 ? " " + quotation : "") + " " + suggestion

    RowLayout {
        id: content

        anchors.fill: parent
        anchors.margins: Theme.gap12
        anchors.leftMargin: Theme.gap16
        spacing: Theme.gap12

        Icon {
            Layout.alignment: words.height < content.height ? Qt.AlignVCenter : Qt.AlignTop
            name: "warning"
            color: root.chat.banner.isNotice ? Theme.warning : Theme.danger
        }
        ColumnLayout {
            id: words

            Layout.fillWidth: true
            spacing: 2

            SmallText {
                Layout.fillWidth: true
                text: root.message
                color: Theme.text
                font.weight: Font.Medium
            }
            SmallText {
                objectName: "serverWords"
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.quotation
                font.italic: true
            }
            SmallText {
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.suggestion
            }
        }
        PushButton {
            objectName: "raiseReplyLimit"
            Layout.alignment: Qt.AlignTop
            visible: root.chat.banner.mayRaiseReplyLimit
            text: qsTr("Longest Reply…")
            onClicked: root.shell.replyLimitRequested()
        }
        PushButton {
            objectName: "restartLocalModel"
            Layout.alignment: Qt.AlignTop
            visible: root.chat.banner.mayRestartLocalModel
            text: qsTr("Restart Local AI")
            onClicked: root.chat.restartLocalModel()
        }
        PushButton {
            objectName: "openVoiceSettings"
            Layout.alignment: Qt.AlignTop
            visible: root.chat.banner.mayOpenVoiceSettings
            text: qsTr("Voice Settings…")
            onClicked: root.shell.voiceSettingsRequested()
        }
        PushButton {
            objectName: "openAbilities"
            Layout.alignment: Qt.AlignTop
            visible: root.chat.banner.mayOpenAbilities
            text: qsTr("Abilities…")
            onClicked: root.shell.abilitiesRequested()
        }
        PushButton {
            objectName: "openKeyboardSettings"
            Layout.alignment: Qt.AlignTop
            visible: root.chat.banner.mayOpenKeyboardSettings
            text: qsTr("Keyboard…")
            onClicked: root.shell.keyboardSettingsRequested()
        }
        PushButton {
            objectName: "retry"
            Layout.alignment: Qt.AlignTop
            visible: root.chat.banner.retryable
            text: qsTr("Retry")
            onClicked: root.chat.retry()
        }
        IconButton {
            objectName: "dismissBanner"
            Layout.alignment: Qt.AlignTop
            text: qsTr("Dismiss")
            glyph: "close"
            onClicked: root.chat.dismissBanner()
        }
    }
}
