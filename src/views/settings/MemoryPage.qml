pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The notes that the assistant keeps about the person.
SettingsPage {
    id: root

    required property MemoryViewModel memory
    required property SettingsStore settings

    title: qsTr("Memory")

    SettingsCard {
        SwitchRow {
            objectName: "memory.enabled"
            title: qsTr("Keep notes")
            explanation: qsTr("While it is off, no note is saved and none goes along with a message. A Ghost chat never uses them.")
            checked: root.settings.memoryEnabled
            onToggled: on => root.settings.memoryEnabled = on
        }
    }
    SettingsCard {
        heading: qsTr("Notes")

        SmallText {
            objectName: "memoryProblem"
            Layout.fillWidth: true
            Layout.bottomMargin: Theme.gap8
            visible: text.length > 0
            text: root.memory.problem
            color: Theme.danger
            font.weight: Font.Medium
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        SmallText {
            Layout.fillWidth: true
            Layout.bottomMargin: Theme.gap8
            visible: root.memory.count === 0 && root.memory.problem.length === 0
            text: qsTr("There are none yet. Tell the model something about you that is worth keeping.")
        }
        Repeater {
            model: root.memory

            NoteRow {
                onEdited: text => root.memory.update(factId, text)
                onRemovalChosen: root.memory.remove(factId)
            }
        }
        PushButton {
            objectName: "clearMemory"
            Layout.topMargin: Theme.gap8
            Layout.bottomMargin: Theme.gap8
            visible: root.memory.count > 0 || root.memory.problem.length > 0
            text: qsTr("Clear All Notes…")
            rank: PushButton.Danger
            onClicked: question.open()
        }
    }
    ConfirmPanel {
        id: question

        title: qsTr("Clear all notes?")
        explanation: qsTr("Every note about you is removed from this computer. This can't be undone.")
        remedy: qsTr("Clear")
        onConfirmed: root.memory.clear()
    }
}
