import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Whether the data key is kept under a passphrase of the person's.
ColumnLayout {
    id: root

    required property AppLockViewModel lock
    readonly property bool asks: form.status === Loader.Ready
    readonly property bool isWorking: lock.isPassphraseChanging

    function ask(removes: bool) {
        form.setSource("PassphraseForm.qml", { lock: root.lock, removes: removes });
    }
    function close() {
        form.source = "";
        set.forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: 0
    onVisibleChanged: if (!visible) form.source = ""
    onIsWorkingChanged: {
        if (!isWorking && root.lock.passphraseMessage.length === 0 && root.asks)
            root.close();
    }

    SettingsRow {
        title: qsTr("Passphrase")
        keywords: qsTr("password new repeat current forget encryption")
        explanation: root.lock.hasPassphrase
            ? qsTr("Your key is kept under your passphrase. Without it nobody opens your chats, not even with your disk and your keyring.")
            : qsTr("Keeps your key under a passphrase of its own, so that a stolen disk and keyring don't open your chats.")

        PushButton {
            id: set

            objectName: "setPassphrase"
            enabled: !root.asks
            text: root.lock.hasPassphrase ? qsTr("Change…") : qsTr("Set…")
            Accessible.name: root.lock.hasPassphrase ? qsTr("Change passphrase") : qsTr("Set passphrase")
            onClicked: root.ask(false)
        }
        PushButton {
            objectName: "removePassphrase"
            visible: root.lock.hasPassphrase
            enabled: !root.asks
            text: qsTr("Remove…")
            Accessible.name: qsTr("Remove passphrase")
            onClicked: root.ask(true)
        }
    }
    Loader {
        id: form

        Layout.fillWidth: true
        visible: root.asks
    }
    Connections {
        target: form.item as PassphraseForm
        function onCancelled() { root.close(); }
    }
}
