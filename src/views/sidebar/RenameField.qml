import QtQuick
import Morvane

// The name of a chat, to be changed. Leaving it keeps what was written; Escape keeps nothing.
TextBox {
    id: root

    signal ended(string name)

    function begin(name: string) {
        root.text = name;
        root.forceActiveFocus();
        root.selectAll();
    }

    Accessible.name: qsTr("Name of the chat")
    Keys.onReturnPressed: root.ended(text.trim())
    Keys.onEnterPressed: root.ended(text.trim())
    Keys.onEscapePressed: root.ended("")
    onActiveFocusChanged: if (!activeFocus) root.ended(text.trim())
}
