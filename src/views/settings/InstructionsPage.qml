import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What the assistant is told with every message, in the person's own words.
SettingsPage {
    id: root

    required property InstructionsViewModel instructions

    function save() {
        pause.stop();
        if (root.instructions && pad.text !== root.instructions.text) // none while the window is torn down
            root.instructions.text = pad.text;
    }

    title: qsTr("Instructions")

    Connections {
        target: root.instructions

        function onTextChanged() {
            if (pad.text !== root.instructions.text)
                pad.text = root.instructions.text;
        }
    }
    Timer {
        id: pause

        interval: 400
        onTriggered: root.save()
    }
    onVisibleChanged: if (!visible) save()

    SettingsCard {
        ColumnLayout {
            Layout.fillWidth: true
            Layout.topMargin: Theme.gap12
            Layout.bottomMargin: Theme.gap12
            spacing: Theme.gap12

            SmallText {
                Layout.fillWidth: true
                text: qsTr("How replies should be, what to call you, what you work on. They go with every message to the place that answers, and are kept sealed on this computer.")
            }
            SmallText {
                objectName: "instructionsProblem"
                Layout.fillWidth: true
                visible: text.length > 0
                text: root.instructions.problem
                color: Theme.danger
                font.weight: Font.Medium
                Accessible.role: Accessible.Notification
                Accessible.name: text
            }
            TextPad {
                id: pad

                objectName: "instructions"
                Layout.fillWidth: true
                implicitHeight: 260 * Theme.zoom
                enabled: root.instructions.problem.length === 0
                text: root.instructions.text
                placeholderText: root.instructions.defaultText
                description: qsTr("Instructions")
                onEdited: pause.restart()
                onFocusLeft: root.save()
            }
            RowLayout {
                spacing: Theme.gap12

                PushButton {
                    objectName: "resetInstructions"
                    enabled: pad.text.length > 0 || root.instructions.problem.length > 0
                    text: qsTr("Reset")
                    onClicked: question.open()
                }
                SmallText {
                    Layout.fillWidth: true
                    text: pad.tooLong ? qsTr("What you pasted is too long for this field. Put the part that matters here.")
                                      : qsTr("While it is empty, the words in grey are used.")
                    color: pad.tooLong ? Theme.warning : Theme.secondary
                    Accessible.role: pad.tooLong ? Accessible.Notification : Accessible.StaticText
                    Accessible.name: text
                    font.pixelSize: Theme.captionSize
                }
            }
        }
    }
    ConfirmPanel {
        id: question

        title: qsTr("Reset your instructions?")
        explanation: qsTr("What you wrote is removed from this computer. This can't be undone.")
        remedy: qsTr("Reset")
        onConfirmed: {
            root.instructions.reset();
            pad.text = "";
        }
    }
}
