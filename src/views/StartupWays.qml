import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The ways on from a start that stands still, and the answers where one of them asks first.
RowLayout {
    id: root

    required property StartupViewModel startup
    required property bool asking

    spacing: Theme.gap8
    onAskingChanged: (asking ? backButton : retryButton).forceActiveFocus(Qt.TabFocusReason)
    Keys.onEscapePressed: root.startup.answerQuestion(false)

    PushButton {
        id: retryButton

        visible: !root.asking && root.startup.canRetry
        text: qsTr("Try Again")
        rank: PushButton.Primary
        onVisibleChanged: if (visible) forceActiveFocus(Qt.TabFocusReason)
        onClicked: root.startup.retry()
    }
    PushButton {
        objectName: "useFile"
        visible: !root.asking && root.startup.canUseFile
        text: qsTr("Keep the Key in a File")
        onClicked: root.startup.useFile()
    }
    PushButton {
        objectName: "startAfresh"
        visible: !root.asking && root.startup.canStartAfresh
        text: qsTr("Start Afresh…")
        onClicked: root.startup.startAfresh()
    }
    PushButton {
        objectName: "proceed"
        visible: root.startup.canProceed
        text: qsTr("Continue")
        rank: PushButton.Primary
        onVisibleChanged: if (visible) forceActiveFocus(Qt.TabFocusReason)
        onClicked: root.startup.proceed()
    }
    PushButton {
        visible: !root.asking && !root.startup.canProceed
        text: qsTr("Quit")
        onClicked: Qt.quit()
    }
    PushButton {
        id: backButton

        visible: root.asking
        text: qsTr("Back")
        onClicked: root.startup.answerQuestion(false)
    }
    PushButton {
        objectName: "confirmAfresh"
        visible: root.asking
        text: qsTr("Start Afresh")
        rank: PushButton.Danger
        onClicked: root.startup.answerQuestion(true)
    }
}
