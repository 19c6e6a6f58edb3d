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
    readonly property bool asking: startup.question.length > 0

    width: startup.report.length > 0 ? 620 : 480
    height: Math.max(280, content.implicitHeight + 2 * Theme.gap32)
    title: startup.productName
    color: Theme.page

    Binding { target: Theme; property: "dark"; value: window.dark }

    TextMenus {}
    ColumnLayout {
        id: content

        anchors.centerIn: parent
        width: parent.width - 2 * Theme.gap32
        spacing: Theme.gap16

        Icon {
            Layout.alignment: Qt.AlignHCenter
            name: "morvane"
            implicitWidth: 64
            implicitHeight: 64
        }
        PlainText {
            Layout.fillWidth: true
            visible: window.asking
            horizontalAlignment: Text.AlignHCenter
            text: qsTr("Start afresh?")
            font.pixelSize: Theme.subtitleSize
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        CardText {
            objectName: "startupSentence"
            Layout.fillWidth: true
            horizontalAlignment: TextEdit.AlignHCenter
            font.weight: window.startup.report.length > 0 ? Font.DemiBold : Font.Normal
            text: window.asking ? window.startup.question : window.startup.sentence
            Accessible.ignored: false
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
        Repeater {
            model: window.startup.report

            CardText {
                required property string modelData

                objectName: "reportLine"
                Layout.fillWidth: true
                font.pixelSize: Theme.smallSize
                text: modelData
            }
        }
        StartupWays {
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.gap8
            startup: window.startup
            asking: window.asking
        }
    }
}
