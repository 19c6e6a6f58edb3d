import QtQuick
import QtQuick.Layouts
import Morvane

// What went wrong in one sentence, what may help, and the one thing to do about it.
Rectangle {
    id: root

    required property string message
    required property string suggestion
    required property bool retryable

    signal retryChosen()
    signal dismissed()

    implicitHeight: content.implicitHeight + 2 * Theme.gap12
    radius: Theme.panelRadius
    color: Theme.card
    border.width: 1
    border.color: Theme.hairline

    Accessible.role: Accessible.AlertMessage
    Accessible.name: message + " " + suggestion

    RowLayout {
        id: content

        anchors.fill: parent
        anchors.margins: Theme.gap12
        anchors.leftMargin: Theme.gap16
        spacing: Theme.gap12

        Icon {
            Layout.alignment: Qt.AlignTop
            name: "warning"
            color: Theme.danger
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            SmallText {
                Layout.fillWidth: true
                text: root.message
                color: Theme.text
                font.weight: Font.Medium
            }
            SmallText {
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.suggestion
            }
        }
        PushButton {
            objectName: "retry"
            Layout.alignment: Qt.AlignTop
            visible: root.retryable
            text: qsTr("Retry")
            onClicked: root.retryChosen()
        }
        IconButton {
            objectName: "dismissBanner"
            Layout.alignment: Qt.AlignTop
            text: qsTr("Dismiss")
            glyph: "close"
            onClicked: root.dismissed()
        }
    }
}
