import QtQuick
import Morvane

// A line for a secret. Bind to its length, and ask getText() for what was typed only to hand it on.
TextBox {
    required property string label
    // In front of the line's own, which the toolkit would tell to whoever asks over the accessibility bus.
    property string text

    echoMode: TextInput.Password
    inputMethodHints: Qt.ImhHiddenText | Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
    // The toolkit keeps the name of such a line to itself, so that its description says what it is.
    Accessible.passwordEdit: true
    Accessible.name: label
    Accessible.description: label
}
