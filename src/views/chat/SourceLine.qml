import QtQuick
import Morvane

// Where the next message goes, in one line.
CaptionText {
    required property string note

    text: note
    horizontalAlignment: Text.AlignHCenter
    elide: Text.ElideMiddle
    wrapMode: Text.NoWrap
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("Where the next message goes: %1").arg(note)
}
