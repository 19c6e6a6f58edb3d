import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The first five minutes: where replies come from, what stays private, and the keys. Each step can be skipped, and
// closing the window skips what is left.
T.ApplicationWindow {
    id: root

    required property SettingsModels models
    readonly property ShellViewModel shell: models.shell
    required property CompanionViewModel companion

    property int step: 0
    readonly property int last: 2

    signal left()
    signal ledgerChosen()

    function go(to: int) {
        if (to > root.last)
            root.close();
        else
            root.step = Math.max(0, to);
        pages.contentY = 0;
        forward.forceActiveFocus(Qt.OtherFocusReason);
    }

    objectName: "welcome"
    transientParent: null // it comes before the main window
    title: qsTr("Welcome to %1").arg(shell.productName)
    color: Theme.page
    onVisibleChanged: {
        if (visible)
            root.models.localModel.look();
        else
            root.left();
    }

    FirstSize {
        window: root
        best: Qt.size(760, 720)
        least: Qt.size(560, 480)
    }
    Backdrop { anchors.fill: parent }
    Shortcut { sequence: "Ctrl+W"; onActivated: root.close() }
    Shortcut { sequence: "Alt+Left"; onActivated: root.go(root.step - 1) }
    Shortcut { sequence: "Alt+Right"; onActivated: root.go(root.step + 1) }
    FocusKeeper { home: forward }
    TextMenus {}

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        WelcomeSteps {
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap24
            count: root.last + 1
            current: root.step
        }
        Flickable {
            id: pages

            Layout.fillWidth: true
            Layout.fillHeight: true
            contentHeight: stack.implicitHeight + 2 * Theme.gap24
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            T.ScrollBar.vertical: ScrollHandle {}

            Item {
                id: stack

                x: (pages.width - width) / 2
                y: Theme.gap24
                width: Math.min(600 * Theme.zoom, pages.width - 2 * Theme.gap32)
                implicitHeight: root.step === 0 ? source.implicitHeight
                    : root.step === 1 ? privacy.implicitHeight : keys.implicitHeight

                WelcomeSource {
                    id: source

                    width: parent.width
                    visible: root.step === 0
                    aiSettings: root.models.ai
                    localModel: root.models.localModel
                    nearby: root.models.nearby
                    privateCloud: root.models.privateCloud
                    settings: root.models.store
                    shell: root.shell
                }
                WelcomePrivacy {
                    id: privacy

                    width: parent.width
                    visible: root.step === 1
                    keychainNotice: root.shell.keychainNotice
                    onLedgerChosen: root.ledgerChosen()
                }
                WelcomeKeys {
                    id: keys

                    width: parent.width
                    visible: root.step === 2
                    companion: root.companion
                }
            }
        }
        Hairline { Layout.fillWidth: true }
        RowLayout {
            Layout.margins: Theme.gap16
            spacing: Theme.gap8

            PushButton {
                objectName: "skipWelcome"
                text: qsTr("Skip All")
                visible: root.step < root.last
                onClicked: root.close()
            }
            Item { Layout.fillWidth: true }
            PushButton {
                objectName: "welcomeBack"
                text: qsTr("Back")
                visible: root.step > 0
                onClicked: root.go(root.step - 1)
            }
            PushButton {
                id: forward

                readonly property bool skips: root.step === 0 && !source.hasSource

                objectName: "welcomeForward"
                focus: true
                rank: skips ? PushButton.Plain : PushButton.Primary
                text: root.step === root.last ? qsTr("Start Chatting")
                    : skips ? qsTr("Skip This Step") : qsTr("Continue")
                onClicked: root.go(root.step + 1)
            }
        }
    }
}
