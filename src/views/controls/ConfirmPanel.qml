import QtQuick
import QtQuick.Layouts
import Morvane

// Asks before something is gone for good. The keyboard starts on the harmless answer.
Panel {
    id: root

    property string explanation
    property string remedy

    signal confirmed()

    onOpened: keepButton.forceActiveFocus(Qt.TabFocusReason)

    contentItem: ColumnLayout {
        spacing: Theme.gap24

        SmallText {
            Layout.fillWidth: true
            text: root.explanation
        }
        RowLayout {
            spacing: Theme.gap8

            Item { Layout.fillWidth: true }
            PushButton {
                id: keepButton

                text: qsTr("Cancel")
                onClicked: root.close()
            }
            PushButton {
                text: root.remedy
                rank: PushButton.Danger
                onClicked: {
                    root.close();
                    root.confirmed();
                }
            }
        }
    }
}
