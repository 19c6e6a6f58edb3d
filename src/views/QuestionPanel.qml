pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A question that has to be answered before the application goes on. Closing it is an answer of its own.
Panel {
    id: root

    required property ShellViewModel shell
    property int answer: -1

    function give(button: int) {
        root.answer = button;
        root.close();
    }

    visible: shell.questionTitle.length > 0
    title: shell.questionTitle
    onAboutToShow: answer = -1
    onClosed: shell.answerQuestion(answer)

    contentItem: ColumnLayout {
        spacing: Theme.gap24

        SmallText {
            Layout.fillWidth: true
            text: root.shell.questionText
        }
        Flow {
            Layout.fillWidth: true
            spacing: Theme.gap8
            layoutDirection: Qt.RightToLeft

            Repeater {
                model: root.shell.questionButtons

                PushButton {
                    required property int index
                    required property string modelData

                    text: modelData
                    focus: index === root.shell.questionButtons.length - 1
                    onClicked: root.give(index)
                }
            }
        }
    }
}
