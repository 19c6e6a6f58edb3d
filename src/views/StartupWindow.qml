import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Stands while the key to the person's data is fetched: one sentence, and what can be done.
T.ApplicationWindow {
    id: window

    required property StartupViewModel startup
    required property bool dark

    width: 440
    height: 260
    title: startup.productName
    color: Theme.page

    Binding { target: Theme; property: "dark"; value: window.dark }

    ColumnLayout {
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.gap32
        spacing: Theme.gap16

        Image {
            Layout.alignment: Qt.AlignHCenter
            source: "icons/morvane.svg"
            sourceSize.width: 64
            sourceSize.height: 64
        }
        PlainText {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: window.startup.sentence
            Accessible.role: Accessible.AlertMessage
            Accessible.name: text
        }
        RowLayout {
            Layout.alignment: Qt.AlignHCenter
            spacing: Theme.gap8

            PushButton {
                visible: window.startup.canRetry
                text: qsTr("Try Again")
                onClicked: window.startup.retry()
            }
            PushButton {
                text: qsTr("Quit")
                onClicked: Qt.quit()
            }
        }
    }
}
