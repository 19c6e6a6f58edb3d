import QtQuick
import Morvane

// What can be done with a chat that was found.
PopupMenu {
    id: root

    required property SearchResultRow row
    readonly property bool hasExcerpt: row.excerpt.length > 0

    objectName: "searchResultMenu"

    PopupMenuItem {
        text: qsTr("Open")
        onTriggered: root.row.chosen()
    }
    PopupMenuItem {
        text: root.hasExcerpt ? qsTr("Copy Text") : qsTr("Copy Title")
        onTriggered: root.row.copyAsked(root.hasExcerpt ? root.row.excerpt : root.row.title)
    }
}
