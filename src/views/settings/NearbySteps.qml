import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What makes the other computer answer.
ColumnLayout {
    id: root

    required property NearbyViewModel nearby

    signal copyAsked(string text)

    spacing: Theme.gap8

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Setup steps")

    SmallText {
        objectName: "setupInstruction"
        Layout.fillWidth: true
        text: root.nearby.instruction
        color: Theme.text
    }
    CommandText {
        Layout.fillWidth: true
        visible: command.length > 0
        command: root.nearby.command
        onCopyAsked: text => root.copyAsked(text)
    }
    SmallText {
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.nearby.otherwise
    }
    SmallText {
        Layout.fillWidth: true
        text: root.nearby.check
    }
}
