pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// How the window looks.
SettingsPage {
    id: root

    required property SettingsStore settings
    required property ShellViewModel shell
    readonly property LaunchAtLoginViewModel login: shell.launchAtLogin

    title: qsTr("Appearance")
    onVisibleChanged: if (visible) root.login?.look()

    SettingsCard {
        SettingsRow {
            title: qsTr("Colours")
            keywords: qsTr("theme mode")
            explanation: qsTr("Follow the desktop, or always one of them.")

            ChoiceButton {
                objectName: "appearance.system"
                text: qsTr("System")
                checked: root.settings.appearance === "system"
                onClicked: root.settings.appearance = "system"
            }
            ChoiceButton {
                objectName: "appearance.light"
                text: qsTr("Light")
                checked: root.settings.appearance === "light"
                onClicked: root.settings.appearance = "light"
            }
            ChoiceButton {
                objectName: "appearance.dark"
                text: qsTr("Dark")
                checked: root.settings.appearance === "dark"
                onClicked: root.settings.appearance = "dark"
            }
            ChoiceButton {
                objectName: "appearance.gallery"
                text: qsTr("Gallery")
                checked: root.settings.appearance === "gallery"
                onClicked: root.settings.appearance = "gallery"
            }
        }
        SettingsRow {
            visible: root.settings.appearance === "gallery"
            title: qsTr("Backdrop")
            explanation: qsTr("What the gallery shows behind the chat.")

            Repeater {
                model: root.shell.backdrops

                BackdropButton {
                    required property string modelData

                    name: modelData
                    checked: root.shell.backdrop === modelData
                    onClicked: root.settings.galleryBackdrop = modelData
                }
            }
        }
        SettingsRow {
            title: qsTr("Text size")
            keywords: qsTr("font letters")
            explanation: qsTr("Of the chat and of everything around it.")

            ChoiceButton {
                objectName: "textSize.small"
                text: qsTr("Small")
                checked: root.settings.chatTextSize === "small"
                onClicked: root.settings.chatTextSize = "small"
            }
            ChoiceButton {
                objectName: "textSize.medium"
                text: qsTr("Medium")
                checked: root.settings.chatTextSize === "medium"
                onClicked: root.settings.chatTextSize = "medium"
            }
            ChoiceButton {
                objectName: "textSize.large"
                text: qsTr("Large")
                checked: root.settings.chatTextSize === "large"
                onClicked: root.settings.chatTextSize = "large"
            }
        }
        SettingsRow {
            title: qsTr("Zoom")
            keywords: qsTr("scale size")
            explanation: qsTr("Of everything, on top of the text size: %1 and %2, or Ctrl and the wheel.")
                .arg(Keymap.zoomIn[0]).arg(Keymap.zoomOut)

            IconButton {
                objectName: "zoomOut"
                text: qsTr("Show everything smaller")
                glyph: "minus"
                enabled: root.shell.zoom > root.shell.zooms[0]
                onClicked: root.shell.zoomBy(-1)
            }
            PushButton {
                objectName: "usualSize"
                text: qsTr("%1 %").arg(root.shell.zoom)
                Accessible.name: qsTr("%1 percent, press for the usual size").arg(root.shell.zoom)
                onClicked: root.shell.zoomBy(0)
            }
            IconButton {
                objectName: "zoomIn"
                text: qsTr("Show everything larger")
                glyph: "plus"
                enabled: root.shell.zoom < root.shell.zooms[root.shell.zooms.length - 1]
                onClicked: root.shell.zoomBy(1)
            }
        }
        SettingsRow {
            title: qsTr("Reduce motion")
            keywords: qsTr("animation accessibility")
            explanation: qsTr("Keeps the ghost and the dots still; nothing slides.")
                + (root.shell.reduceAnimation && !root.settings.reduceAnimation ? " " + qsTr("Your desktop asks for it already.") : "")

            ToggleSwitch {
                objectName: "reduceMotion"
                text: qsTr("Reduce motion")
                checked: root.settings.reduceAnimation
                onToggled: root.settings.reduceAnimation = checked
            }
        }
    }
    SettingsCard {
        heading: qsTr("On the desktop")

        SwitchRow {
            objectName: "showInPanel"
            title: qsTr("Show in the panel")
            explanation: qsTr("The ghost shows how it stands with a reply, and the window may be closed meanwhile.")
            checked: root.settings.showMenuBarIcon
            onToggled: on => root.settings.showMenuBarIcon = on
        }
        SwitchRow {
            objectName: "launchAtLogin"
            visible: root.login?.isOffered ?? false
            title: qsTr("Start at login")
            explanation: root.login?.message || qsTr("Waits in the panel until you want it.")
            checked: root.login?.isEnabled ?? false
            onToggled: on => root.login?.setEnabled(on)
        }
    }
}
