import QtQuick
import Morvane

// A line for a passphrase. Bind to its length and hand the item itself on: no script ever reads what was typed.
TextBox {
    // In front of the line's own, which the toolkit would tell to whoever asks over the accessibility bus.
    property string text

    echoMode: TextInput.Password
    maximumLength: 1024
    placeholderText: qsTr("Passphrase")
    inputMethodHints: Qt.ImhHiddenText | Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
    Accessible.name: placeholderText
    Accessible.passwordEdit: true
}
