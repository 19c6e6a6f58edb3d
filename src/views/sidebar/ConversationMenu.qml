import QtQuick
import Morvane

// What can be done with a chat.
PopupMenu {
    id: root

    signal renameChosen()
    signal deletionChosen()

    PopupMenuItem {
        text: qsTr("Rename")
        onTriggered: root.renameChosen()
    }
    PopupMenuItem {
        text: qsTr("Delete…")
        dangerous: true
        onTriggered: root.deletionChosen()
    }
}
