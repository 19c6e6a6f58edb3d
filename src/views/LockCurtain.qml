import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Stands in the window while it is locked, and lets nothing through. It says nothing of any chat.
FocusScope {
    id: root

    required property AppLockViewModel lock

    function press() {
        if (root.lock.isUnlocking)
            root.lock.cancelUnlock();
        else
            root.lock.unlock();
    }
    function takeFocus() {
        if (root.visible)
            button.forceActiveFocus();
    }

    focus: true
    onVisibleChanged: Qt.callLater(root.takeFocus) // qmllint disable
    Component.onCompleted: Qt.callLater(root.takeFocus) // qmllint disable
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Locked")
    Keys.onEscapePressed: root.lock.cancelUnlock()

    Shortcut { sequence: Keymap.quit; enabled: root.visible; onActivated: Qt.quit() }
    Rectangle {
        anchors.fill: parent
        color: Theme.page
    }
    MouseArea { // nothing reaches what might lie below
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
        hoverEnabled: true
        onWheel: wheel => wheel.accepted = true
    }
    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(360, parent.width - 2 * Theme.gap24)
        spacing: Theme.gap16

        SleepingGhost {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: Theme.gap8
            size: 112
        }
        PlainText {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: qsTr("Locked")
            font.pixelSize: Theme.titleSize
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        SmallText {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: root.lock.isUnlocking ? qsTr("Your desktop asks whether it is you.")
                : qsTr("Your chats are sealed until you unlock them.")
        }
        PushButton { // one for both, so that the keyboard stays on it
            id: button

            objectName: "unlockButton"
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap8
            Layout.preferredWidth: 160
            focus: true
            enabled: root.lock.isUnlocking || root.lock.canUnlock
            rank: root.lock.isUnlocking ? PushButton.Plain : PushButton.Primary
            text: root.lock.isUnlocking ? qsTr("Cancel") : qsTr("Unlock")
            onClicked: root.press()
        }
        SmallText {
            objectName: "unlockMessage"
            Layout.fillWidth: true
            visible: text.length > 0
            horizontalAlignment: Text.AlignHCenter
            color: Theme.warning
            text: root.lock.unlockMessage
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
    }
}
