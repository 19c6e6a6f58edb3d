import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Where no runtime can be fetched and checked: the person installs one, and it is watched for.
ColumnLayout {
    id: root

    required property LocalModelViewModel local

    signal copyAsked(string text)

    spacing: Theme.gap8
    onVisibleChanged: if (!visible) root.local.leave()

    SmallText {
        Layout.fillWidth: true
        text: qsTr("This installs Ollama from its maker. Copy it into a terminal, then look again.")
    }
    CommandText {
        Layout.fillWidth: true
        command: root.local.installCommand
        onCopyAsked: text => {
            root.copyAsked(text);
            root.local.watch();
        }
    }
    PushButton {
        objectName: "lookAgain"
        Layout.alignment: Qt.AlignRight
        text: qsTr("Look Again")
        onClicked: root.local.setUp()
    }
}
