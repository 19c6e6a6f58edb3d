import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What a press would fetch, and the one question before it does.
Rectangle {
    id: root

    required property LocalModelViewModel local

    implicitHeight: column.implicitHeight + 2 * Theme.gap12
    radius: Theme.panelRadius
    color: Theme.currentWash
    onVisibleChanged: if (visible) notNow.forceActiveFocus(Qt.OtherFocusReason)

    ColumnLayout {
        id: column

        anchors.fill: parent
        anchors.margins: Theme.gap12
        spacing: Theme.gap12

        SmallText {
            Layout.fillWidth: true
            text: qsTr("This fetches:") + "\n" + root.local.question
            color: Theme.text
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: Theme.gap8

            PushButton {
                id: notNow

                objectName: "notNow"
                text: qsTr("Not Now")
                onClicked: root.local.answer(false)
            }
            PushButton {
                objectName: "fetchLocal"
                text: qsTr("Fetch and Set Up")
                rank: PushButton.Primary
                onClicked: root.local.answer(true)
            }
        }
    }
}
