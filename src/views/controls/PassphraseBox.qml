import QtQuick
import Morvane

// A line for a passphrase. Hand the item itself on: no script ever reads what was typed.
SecretBox {
    maximumLength: 1024
    placeholderText: qsTr("Passphrase")
    label: placeholderText
}
