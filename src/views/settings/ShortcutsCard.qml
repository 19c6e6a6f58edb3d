pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The shortcuts that there are, the way to their folder, and how one is made.
SettingsCard {
    id: root

    required property ShortcutListModel shortcuts

    signal copyAsked(string text)

    heading: qsTr("Shortcuts")
    visible: shortcuts.isAvailable

    SettingsRow {
        title: qsTr("Shortcuts folder")
        explanation: root.shortcuts.message.length > 0 ? root.shortcuts.folder + "\n" + root.shortcuts.message : root.shortcuts.folder
        explanationInk: root.shortcuts.message.length > 0 ? Theme.danger : Theme.secondary

        PushButton {
            objectName: "shortcuts.open"
            text: qsTr("Open")
            onClicked: root.shortcuts.openFolder()
        }
        PushButton {
            objectName: "shortcuts.refresh"
            text: qsTr("Look Again")
            onClicked: root.shortcuts.refresh()
        }
    }
    Repeater {
        model: root.shortcuts

        ColumnLayout {
            id: entry

            required property string name
            required property string comment
            required property bool refused
            readonly property string title: name // which it is found by
            readonly property string explanation: comment

            Layout.fillWidth: true
            Layout.topMargin: Theme.gap8
            Layout.bottomMargin: Theme.gap8
            spacing: 2

            Accessible.role: Accessible.StaticText
            Accessible.name: name
            Accessible.description: comment

            PlainText {
                Layout.fillWidth: true
                text: entry.name
                font.pixelSize: Theme.smallSize
                font.weight: Font.Medium
            }
            CaptionText {
                Layout.fillWidth: true
                visible: text.length > 0
                text: entry.comment
                color: entry.refused ? Theme.warning : Theme.secondary
            }
        }
    }
    CaptionText {
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap8
        text: root.shortcuts.count > 0
            ? qsTr("A shortcut is a program in this folder that you may run, by its whole name. It starts in an empty folder and may take 20 seconds; what it started ends with it. Text comes as a file, and the first %1 characters it prints go to the model. For instance:").arg(500)
            : qsTr("There is none yet. A shortcut is a program in this folder that you may run, by its whole name. It starts in an empty folder and may take 20 seconds; what it started ends with it. Text comes as a file, and the first %1 characters it prints go to the model. For instance, make this file executable:").arg(500)
    }
    CommandText {
        Layout.fillWidth: true
        Layout.topMargin: Theme.gap8
        Layout.bottomMargin: Theme.gap8
        command: root.shortcuts.example
        onCopyAsked: text => root.copyAsked(text)
    }
}
