import QtQuick
import Morvane

// Facts about one thing.
DataCard {
    id: root

    required property var content
    required property string plainText

    objectName: "facts"

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Facts")
    Accessible.description: plainText

    FactRows { facts: root.content.entries }
    MoreEntries { count: root.content.more }
}
