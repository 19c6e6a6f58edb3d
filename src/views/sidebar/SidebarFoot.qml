import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The ghost, where replies come from, and the way to the settings.
RowLayout {
    id: root

    required property ChatViewModel chat
    required property CompanionViewModel companion

    signal settingsChosen()

    spacing: Theme.gap8

    Ghost {
        objectName: "companion"
        Layout.leftMargin: Theme.gap12
        Layout.topMargin: Theme.gap8
        Layout.bottomMargin: Theme.gap8
        size: 40
        companion: root.companion
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 0

        SmallText {
            Layout.fillWidth: true
            text: root.chat.isConfigured ? qsTr("Replies come from") : qsTr("Nothing is set up yet")
            font.pixelSize: Theme.captionSize
            elide: Text.ElideRight
            wrapMode: Text.NoWrap
        }
        SmallText {
            objectName: "activeSource"
            Layout.fillWidth: true
            visible: root.chat.isConfigured
            text: root.chat.sourceLabel
            color: Theme.text
            elide: Text.ElideMiddle
            wrapMode: Text.NoWrap
        }
    }
    IconButton {
        objectName: "openSettings"
        Layout.rightMargin: Theme.gap12
        text: qsTr("Settings")
        glyph: "settings"
        onClicked: root.settingsChosen()
    }
}
