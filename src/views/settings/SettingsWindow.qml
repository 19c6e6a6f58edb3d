import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Settings in a window of their own. Changes apply at once, so there is nothing to save or to cancel.
T.ApplicationWindow {
    id: root

    required property AISettingsViewModel aiSettings
    required property NetworkLedgerViewModel networkLedger
    required property ShellViewModel shell
    property int page: 0

    width: 860
    height: 620
    minimumWidth: 640
    minimumHeight: 420
    title: qsTr("Settings")
    color: Theme.page

    Backdrop { anchors.fill: parent }
    Shortcut {
        sequences: ["Esc", "Ctrl+W"]
        onActivated: root.close()
    }
    RowLayout {
        anchors.fill: parent
        spacing: 0

        SettingsMenu {
            Layout.fillHeight: true
            implicitWidth: 200
            currentPage: root.page
            onChosen: page => root.page = page
        }
        StackLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            currentIndex: root.page

            AIPage {
                settings: root.aiSettings
                keychainNotice: root.shell.keychainNotice
            }
            AppearancePage { shell: root.shell }
            NetworkPage {
                ledger: root.networkLedger
                productName: root.shell.productName
                shown: root.visible && root.page === 2
            }
        }
    }
}
