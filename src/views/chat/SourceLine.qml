import QtQuick
import Morvane

// Where the next message goes, in one line; before it leaves the machine's network also who can read it.
CaptionText {
    id: root

    required property string destination
    required property string warning
    readonly property string note: warning.length > 0 ? destination + " · " + warning : destination

    objectName: "sourceLine"
    text: note
    color: warning.length > 0 ? Theme.warning : Theme.secondary
    horizontalAlignment: Text.AlignHCenter
    elide: Text.ElideMiddle
    wrapMode: Text.Wrap
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("Where the next message goes: %1").arg(note)
}
