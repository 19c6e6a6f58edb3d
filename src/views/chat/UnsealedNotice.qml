import QtQuick
import Morvane
import Morvane.ViewModels

// New text is stored readable: said for as long as it lasts, and why.
StartupProblem {
    required property ShellViewModel shell

    objectName: "unsealedNotice"
    message: qsTr("New text is being kept unsealed")
    suggestion: shell.unsealedNotice
}
