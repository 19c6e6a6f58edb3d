import QtQuick
import QtQuick.Layouts
import Morvane

// Says at the top of a Ghost chat what holds for all of it.
Rectangle {
    id: root

    property bool isSaved: false // once the reply is there

    implicitWidth: line.implicitWidth + 2 * Theme.gap12
    implicitHeight: line.implicitHeight + Theme.gap8
    radius: height / 2
    color: Theme.ghostWash

    RowLayout {
        id: line

        anchors.centerIn: parent
        width: Math.min(implicitWidth, root.width - 2 * Theme.gap12)
        spacing: Theme.gap8

        Icon {
            name: "ghost"
            color: Theme.ghost
            implicitWidth: 16 * Theme.zoom
            implicitHeight: 16 * Theme.zoom
        }
        CaptionText {
            objectName: "ghostBadge"
            Layout.fillWidth: true
            text: root.isSaved ? qsTr("Saved when the reply finishes") : qsTr("Nothing here is kept")
            color: Theme.ghost
            font.weight: Font.Medium
            elide: Text.ElideRight
            wrapMode: Text.NoWrap
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}
