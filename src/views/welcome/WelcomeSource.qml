import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// First step: where replies come from.
ColumnLayout {
    id: root

    required property AISettingsViewModel aiSettings
    required property LocalModelViewModel localModel
    required property NearbyViewModel nearby
    required property PrivateCloudViewModel privateCloud
    required property SettingsStore settings
    required property ShellViewModel shell

    property string open: "local"
    readonly property bool hasSource: settings.model.length > 0
        || settings.hostedChatEnabled && privateCloud.problem.length === 0

    function toggle(choice: string) {
        root.open = root.open === choice ? "" : choice;
    }

    spacing: Theme.gap12

    WelcomeHeading {
        text: qsTr("Where should replies come from?")
        explanation: qsTr("You can change this at any time in Settings.")
    }
    WelcomeChoice {
        objectName: "chooseLocal"
        glyph: "computer"
        title: qsTr("On this computer")
        explanation: qsTr("Nothing you write leaves it.")
        open: root.open === "local"
        onToggled: root.toggle("local")

        LocalModelPress {
            Layout.fillWidth: true
            local: root.localModel
            onCopyAsked: text => root.shell.copy(text)
        }
    }
    WelcomeChoice {
        objectName: "chooseNearby"
        glyph: "network"
        title: qsTr("A computer nearby")
        explanation: qsTr("What you write stays on your network.")
        open: root.open === "nearby"
        onToggled: root.toggle("nearby")

        NearbyServer {
            Layout.fillWidth: true
            nearby: root.nearby
            onCopyAsked: text => root.shell.copy(text)
        }
    }
    WelcomeChoice {
        objectName: "chooseServer"
        glyph: "globe"
        title: qsTr("An address and a key")
        explanation: qsTr("A service that you use. It can read what you send.")
        open: root.open === "server"
        onToggled: root.toggle("server")

        ServerRows {
            Layout.fillWidth: true
            ai: root.aiSettings
            settings: root.settings
            keychainNotice: root.shell.keychainNotice
        }
        ConnectionTest { ai: root.aiSettings }
        ConnectionFindingList { findings: root.aiSettings.findings }
    }
    WelcomeChoice {
        objectName: "chooseCloud"
        visible: root.privateCloud.problem.length === 0
        glyph: "sealed"
        title: qsTr("The private cloud")
        explanation: qsTr("Sealed on this computer for a server that proves its hardware first.")
        open: root.open === "cloud"
        onToggled: root.toggle("cloud")

        SwitchRow {
            title: qsTr("Use the private cloud")
            explanation: qsTr("Each answer shows the proof of where it ran.")
            checked: root.settings.hostedChatEnabled
            onToggled: on => root.settings.hostedChatEnabled = on
        }
    }
}
