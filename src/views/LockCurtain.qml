import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Stands in the window while it is locked, and lets nothing through. It says nothing of any chat.
FocusScope {
    id: root

    required property AppLockViewModel lock
    required property PrivacyViewModel privacy
    required property ShellViewModel shell
    readonly property bool takesPassphrase: lock.hasPassphrase
    readonly property PassphraseBox field: entry.item as PassphraseBox
    readonly property bool isForgotten: forgotten.status === Loader.Ready

    function press() {
        if (root.lock.isUnlocking)
            root.lock.cancelUnlock();
        else if (root.takesPassphrase)
            root.lock.unlockWith(root.field);
        else
            root.lock.unlock();
    }
    function forget() {
        forgotten.setSource("ForgottenPassphrase.qml", { privacy: root.privacy });
    }
    function takeFocus() {
        if (!root.visible || root.isForgotten)
            return;
        if (root.field && root.field.enabled)
            root.field.forceActiveFocus();
        else
            button.forceActiveFocus();
    }

    focus: true
    onVisibleChanged: {
        forgotten.source = "";
        Qt.callLater(root.takeFocus); // qmllint disable
    }
    onTakesPassphraseChanged: Qt.callLater(root.takeFocus) // qmllint disable
    Component.onCompleted: Qt.callLater(root.takeFocus) // qmllint disable
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Locked")
    Keys.onEscapePressed: root.lock.cancelUnlock()

    Shortcut { sequence: Keymap.quit; enabled: root.visible; onActivated: Qt.quit() }
    Shortcut { sequence: Keymap.settings; enabled: root.visible; onActivated: root.shell.settingsRequested() }
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
        width: Math.min(360 * Theme.zoom, parent.width - 2 * Theme.gap24)
        visible: !root.isForgotten
        spacing: Theme.gap16

        SleepingGhost {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: Theme.gap8
            size: 112 * Theme.zoom
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
            text: !root.lock.isUnlocking ? qsTr("Your chats are sealed until you unlock them.")
                : root.lock.asksPresence ? qsTr("Your desktop asks whether it is you.")
                : qsTr("Trying your passphrase…")
        }
        Loader { // its line is gone from memory once it is unlocked
            id: entry

            Layout.fillWidth: true
            active: root.visible && root.takesPassphrase
            visible: active
            enabled: !root.lock.isUnlocking
            source: "controls/PassphraseBox.qml"
            onLoaded: Qt.callLater(root.takeFocus) // qmllint disable
            onEnabledChanged: if (enabled) Qt.callLater(root.takeFocus) // qmllint disable
        }
        Connections {
            target: root.field
            function onAccepted() {
                if (button.enabled)
                    root.press();
            }
        }
        PushButton { // one for both, so that the keyboard stays on it
            id: button

            objectName: "unlockButton"
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap8
            Layout.preferredWidth: 160 * Theme.zoom
            focus: true
            enabled: root.lock.isUnlocking
                || (root.lock.canUnlock && (!root.takesPassphrase || (root.field !== null && root.field.length > 0)))
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
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        PushButton {
            objectName: "forgotPassphrase"
            Layout.alignment: Qt.AlignHCenter
            visible: root.takesPassphrase
            text: qsTr("I Forgot It…")
            Accessible.name: qsTr("I forgot the passphrase")
            onClicked: root.forget()
        }
    }
    IconButton {
        objectName: "lockedSettings"
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.gap16
        visible: !root.isForgotten
        focusPolicy: Qt.TabFocus // a click leaves the keyboard where one unlocks
        text: qsTr("Settings")
        glyph: "settings"
        onClicked: root.shell.settingsRequested()
    }
    Loader {
        id: forgotten

        anchors.fill: parent
    }
    Connections {
        target: forgotten.item as ForgottenPassphrase
        function onReturned() {
            forgotten.source = "";
            root.takeFocus();
        }
    }
}
