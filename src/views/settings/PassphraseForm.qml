pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Sets, changes or removes the passphrase over the data key. Made anew each time, so that its lines are gone from
// memory when it closes.
ColumnLayout {
    id: root

    required property AppLockViewModel lock
    required property bool removes

    signal cancelled()

    function send() {
        if (!go.enabled)
            return;
        if (root.removes)
            root.lock.removePassphrase(former);
        else
            root.lock.setPassphrase(former, chosen, repeated);
        (former.visible ? former : chosen).forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: Theme.gap8
    Keys.onEscapePressed: root.cancelled()
    Component.onCompleted: {
        root.lock.forgetPassphraseMessage();
        (former.visible ? former : chosen).forceActiveFocus(Qt.TabFocusReason);
    }

    SmallText {
        Layout.fillWidth: true
        visible: !root.removes
        color: Theme.text
        text: qsTr("If you forget it, nothing can open your chats any more: it is stored nowhere, and nobody can reset it. Copies of your keyring from before open them without it as long as they exist.")
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    PassphraseBox {
        id: former

        objectName: "formerPassphrase"
        Layout.fillWidth: true
        visible: root.lock.hasPassphrase
        enabled: !root.lock.isPassphraseChanging
        placeholderText: qsTr("Passphrase until now")
        onAccepted: root.send()
    }
    PassphraseBox {
        id: chosen

        objectName: "chosenPassphrase"
        Layout.fillWidth: true
        visible: !root.removes
        enabled: !root.lock.isPassphraseChanging
        placeholderText: qsTr("New passphrase")
        onAccepted: root.send()
    }
    PassphraseBox {
        id: repeated

        objectName: "repeatedPassphrase"
        Layout.fillWidth: true
        visible: !root.removes
        enabled: !root.lock.isPassphraseChanging
        placeholderText: qsTr("New passphrase again")
        onAccepted: root.send()
    }
    SmallText {
        objectName: "passphraseMessage"
        Layout.fillWidth: true
        visible: text.length > 0
        color: root.lock.isPassphraseChanging ? Theme.secondary : Theme.warning
        text: root.lock.isPassphraseChanging ? qsTr("One moment…") : root.lock.passphraseMessage
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.bottomMargin: Theme.gap8
        spacing: Theme.gap8

        PushButton {
            objectName: "keepPassphrase"
            text: qsTr("Cancel")
            onClicked: root.cancelled()
        }
        PushButton {
            id: go

            objectName: "confirmPassphrase"
            rank: PushButton.Primary
            text: root.removes ? qsTr("Remove Passphrase") : qsTr("Set Passphrase")
            enabled: !root.lock.isPassphraseChanging && (!former.visible || former.length > 0)
                && (root.removes || (chosen.length > 0 && repeated.length > 0))
            onClicked: root.send()
        }
    }
}
