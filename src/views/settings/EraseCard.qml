pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Deletes everything that the application keeps, once the person has read what that can't reach and has typed
// that they mean it.
SettingsCard {
    id: root

    required property PrivacyViewModel privacy
    property bool asking: false

    function ask(asks: bool) {
        typed.clear();
        root.asking = asks;
        if (asks)
            typed.forceActiveFocus(Qt.TabFocusReason);
        else
            begin.forceActiveFocus(Qt.TabFocusReason);
    }

    keywords: qsTr("erase wipe reset")
    heading: qsTr("Delete All Local Data")
    onVisibleChanged: if (!visible && asking) { // another page, or the window has gone
        typed.clear();
        asking = false;
    }

    SmallText {
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap4
        Layout.bottomMargin: Theme.gap12
        visible: !root.asking
        text: qsTr("Chats, notes, instructions, keys and settings go from this computer.") + " " + root.privacy.shortLimits
    }
    PushButton {
        id: begin

        objectName: "eraseAll"
        Layout.alignment: Qt.AlignRight
        Layout.bottomMargin: Theme.gap8
        visible: !root.asking
        text: qsTr("Delete All Local Data…")
        rank: PushButton.Danger
        onClicked: root.ask(true)
    }
    SmallText {
        Layout.topMargin: Theme.gap4
        visible: root.asking
        text: qsTr("This can't be undone, and it does not reach:")
        color: Theme.text
        Accessible.role: Accessible.Notification
        Accessible.name: text
    }
    Repeater {
        model: root.privacy.limits

        SmallText {
            required property string modelData

            Layout.fillWidth: true
            Layout.topMargin: Theme.gap8
            visible: root.asking
            text: modelData
        }
    }
    TextBox {
        id: typed

        objectName: "eraseConfirmation"
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap16
        visible: root.asking
        placeholderText: qsTr("Type “%1” to go on").arg(root.privacy.confirmation)
        Accessible.name: placeholderText
        Keys.onEscapePressed: root.ask(false)
        onAccepted: if (confirm.enabled) confirm.clicked()
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        Layout.topMargin: Theme.gap12
        Layout.bottomMargin: Theme.gap8
        visible: root.asking
        spacing: Theme.gap8

        PushButton {
            objectName: "keepData"
            text: qsTr("Cancel")
            onClicked: root.ask(false)
        }
        PushButton {
            id: confirm

            objectName: "confirmErasure"
            text: qsTr("Delete Everything")
            rank: PushButton.Danger
            enabled: root.privacy.isConfirmation(typed.text)
            onClicked: root.privacy.eraseAll(typed.text)
        }
    }
}
