import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// What the application has to say above every chat, for as long as it holds.
ColumnLayout {
    id: root

    required property ShellViewModel shell

    spacing: 0

    Notice {
        Layout.topMargin: Theme.gap8
        part: "chat/StartupProblem.qml"
        given: ({ message: root.shell.startupError, suggestion: root.shell.startupSuggestion })
        wanted: root.shell.startupError.length > 0
    }
    Notice {
        Layout.topMargin: Theme.gap8
        part: "chat/UnsealedNotice.qml"
        given: ({ shell: root.shell })
        wanted: root.shell.unsealedNotice.length > 0
    }
    Notice {
        Layout.topMargin: Theme.gap8
        part: "chat/StandingNotice.qml"
        given: ({ shell: root.shell })
        wanted: root.shell.noticeTitle.length > 0
    }
}
