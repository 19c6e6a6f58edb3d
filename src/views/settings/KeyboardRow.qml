pragma ComponentBehavior: Bound

import QtQuick
import QtQml.Models
import Morvane
import Morvane.ViewModels

// A key for the whole desktop: the one that is bound, on a button that records another, and a menu of a few.
// Where the desktop has keys in its own settings, the button leads there instead.
SettingsRow {
    id: root

    required property GlobalShortcutViewModel key
    property string purpose
    readonly property string shown: key.bound.length > 0 ? key.bound : qsTr("None")

    explanation: key.note.length > 0 ? purpose + "\n" + key.note : purpose

    PushButton {
        id: button

        objectName: root.objectName + ".record"
        visible: !root.key.isChosenByDesktop
        text: root.key.isRecording ? qsTr("Press keys…") : root.shown
        rank: root.key.isRecording ? PushButton.Primary : PushButton.Plain
        Accessible.name: root.title + ": " + text
        Accessible.description: root.key.note
        onClicked: root.key.record()
        onActiveFocusChanged: if (!activeFocus) root.key.stopRecording()
        Keys.onShortcutOverride: event => event.accepted = root.key.isRecording
        Keys.onPressed: event => {
            if (!root.key.isRecording || event.key === Qt.Key_Tab || event.key === Qt.Key_Backtab)
                return;
            event.accepted = true;
            if (!event.isAutoRepeat)
                root.key.press(event.key, event.modifiers);
        }
    }
    IconButton {
        id: choice

        objectName: root.objectName + ".presets"
        visible: !root.key.isChosenByDesktop
        glyph: "chevron-down"
        text: qsTr("Usual keys")
        onClicked: menu.popup(choice, 0, choice.height + Theme.gap4)

        PopupMenu {
            id: menu

            Instantiator {
                model: root.key.presets
                onObjectAdded: (index, item) => menu.insertItem(index, item as Item)
                onObjectRemoved: (_, item) => menu.removeItem(item as Item)

                PopupMenuItem {
                    required property string modelData
                    required property int index

                    text: modelData
                    onTriggered: root.key.choosePreset(index)
                }
            }
        }
    }
    KeyCap {
        visible: root.key.isChosenByDesktop
        text: root.shown
    }
    PushButton {
        objectName: root.objectName + ".desktop"
        visible: root.key.isChosenByDesktop && root.key.canShowDesktopSettings
        text: qsTr("Change…")
        Accessible.name: root.title + ": " + root.shown + ", " + text
        onClicked: root.key.showDesktopSettings()
    }
}
