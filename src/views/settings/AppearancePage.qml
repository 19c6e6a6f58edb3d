pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// How the window looks.
SettingsPage {
    id: root

    required property ShellViewModel shell

    title: qsTr("Appearance")

    SettingsCard {
        SettingsRow {
            title: qsTr("Colours")
            explanation: qsTr("Follow the desktop, or always one of them.")

            ChoiceButton {
                objectName: "appearance.system"
                text: qsTr("System")
                checked: root.shell.appearance === "system"
                onClicked: root.shell.appearance = "system"
            }
            ChoiceButton {
                objectName: "appearance.light"
                text: qsTr("Light")
                checked: root.shell.appearance === "light"
                onClicked: root.shell.appearance = "light"
            }
            ChoiceButton {
                objectName: "appearance.dark"
                text: qsTr("Dark")
                checked: root.shell.appearance === "dark"
                onClicked: root.shell.appearance = "dark"
            }
            ChoiceButton {
                objectName: "appearance.gallery"
                text: qsTr("Gallery")
                checked: root.shell.appearance === "gallery"
                onClicked: root.shell.appearance = "gallery"
            }
        }
        SettingsRow {
            visible: root.shell.appearance === "gallery"
            title: qsTr("Backdrop")
            explanation: qsTr("What the gallery shows behind the chat.")

            Repeater {
                model: root.shell.backdrops

                BackdropButton {
                    required property string modelData

                    name: modelData
                    checked: root.shell.backdrop === modelData
                    onClicked: root.shell.backdrop = modelData
                }
            }
        }
        SettingsRow {
            title: qsTr("Text size")
            explanation: qsTr("Of the chat and of everything around it.")

            ChoiceButton {
                objectName: "textSize.small"
                text: qsTr("Small")
                checked: root.shell.textSize === "small"
                onClicked: root.shell.textSize = "small"
            }
            ChoiceButton {
                objectName: "textSize.medium"
                text: qsTr("Medium")
                checked: root.shell.textSize === "medium"
                onClicked: root.shell.textSize = "medium"
            }
            ChoiceButton {
                objectName: "textSize.large"
                text: qsTr("Large")
                checked: root.shell.textSize === "large"
                onClicked: root.shell.textSize = "large"
            }
        }
        SettingsRow {
            title: qsTr("Reduce motion")
            explanation: qsTr("Keeps the ghost and the dots still; nothing slides.")

            ToggleSwitch {
                objectName: "reduceMotion"
                text: qsTr("Reduce motion")
                checked: root.shell.reduceAnimation
                onToggled: root.shell.reduceAnimation = checked
            }
        }
    }
}
