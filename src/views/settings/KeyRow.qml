import QtQuick
import QtQuick.Layouts
import Morvane

// A key. It goes into the keychain and is never read back into the window.
SettingsRow {
    id: root

    required property bool hasKey
    property string purpose: qsTr("Only if the server asks for one.")
    property string notice // where keys are kept, when that needs saying

    signal saveChosen(string key)
    signal removeChosen()

    function save() {
        root.saveChosen(field.getText(0, field.length));
        field.clear();
    }

    title: qsTr("Key")
    explanation: (hasKey ? qsTr("A key is saved.") : purpose) + " "
        + (notice.length > 0 ? notice : qsTr("It is kept in your keyring."))

    SecretBox {
        id: field

        objectName: "key"
        Layout.preferredWidth: (root.hasKey ? 136 : 216) * Theme.zoom
        placeholderText: root.hasKey ? qsTr("A new key") : ""
        label: qsTr("Key")
        onAccepted: if (length > 0) root.save()
    }
    PushButton {
        objectName: "saveKey"
        enabled: field.length > 0
        text: qsTr("Save")
        onClicked: root.save()
    }
    PushButton {
        objectName: "removeKey"
        visible: root.hasKey
        text: qsTr("Remove")
        rank: PushButton.Danger
        onClicked: root.removeChosen()
    }
}
