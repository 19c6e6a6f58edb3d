import QtQuick
import Morvane

// The ground of the cards that show data.
Rectangle {
    id: root

    default property alias entries: column.data
    property alias spacing: column.spacing

    width: parent?.width ?? 0
    implicitHeight: column.implicitHeight + 2 * Theme.gap16
    radius: Theme.cardRadius
    color: Theme.card
    border.width: Theme.lineWidth
    border.color: Theme.hairline

    Column {
        id: column

        x: Theme.gap16
        y: Theme.gap16
        width: root.width - 2 * Theme.gap16
        spacing: Theme.gap8
    }
}
