pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// What the person is to know or to decide, without being kept from the chat meanwhile.
StartupProblem {
    id: root

    required property ShellViewModel shell

    objectName: "notice"
    message: shell.noticeTitle
    suggestion: shell.noticeText

    Repeater {
        model: root.shell.noticeButtons

        PushButton {
            required property int index
            required property string modelData

            text: modelData
            onClicked: root.shell.answerNotice(index)
        }
    }
}
