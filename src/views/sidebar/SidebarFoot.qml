import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The ghost, and the way to the settings.
RowLayout {
    id: root

    required property CompanionViewModel companion

    signal settingsChosen()

    spacing: Theme.gap8

    Ghost {
        objectName: "companion"
        Layout.leftMargin: Theme.gap12
        Layout.topMargin: Theme.gap8
        Layout.bottomMargin: Theme.gap8
        size: 40 * Theme.zoom
        companion: root.companion
    }
    Item { Layout.fillWidth: true }
    IconButton {
        objectName: "openSettings"
        Layout.rightMargin: Theme.gap12
        text: qsTr("Settings")
        glyph: "settings"
        onClicked: root.settingsChosen()
    }
}
