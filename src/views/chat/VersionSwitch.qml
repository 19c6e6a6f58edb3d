import QtQuick
import QtQuick.Layouts
import Morvane

// Which version of a reply is shown, of how many, and the way to the others.
RowLayout {
    id: root

    required property int version // from 1
    required property int count

    signal stepped(int distance)

    spacing: 0

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Version %1 of %2").arg(version).arg(count)
    Keys.onLeftPressed: root.stepped(-1)
    Keys.onRightPressed: root.stepped(1)

    // A button at the end of its way keeps the keyboard, so it stays enabled and only looks otherwise.
    IconButton {
        objectName: "formerVersion"
        size: 28 * Theme.zoom
        text: qsTr("Show the version before")
        glyph: "chevron-left"
        ink: root.version > 1 ? Theme.secondary : Theme.hairline
        onClicked: root.stepped(-1)
    }
    CaptionText {
        objectName: "versionNumber"
        text: qsTr("%1 / %2").arg(root.version).arg(root.count)
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
    IconButton {
        objectName: "nextVersion"
        size: 28 * Theme.zoom
        text: qsTr("Show the version after")
        glyph: "chevron-right"
        ink: root.version < root.count ? Theme.secondary : Theme.hairline
        onClicked: root.stepped(1)
    }
}
