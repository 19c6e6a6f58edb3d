import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// The part of the composer that shows what is being said: how loud, the words so far, and how long it may go on.
RowLayout {
    id: root

    required property VoiceEntry voice
    readonly property bool listening: voice.phase === VoiceEntry.Listening
    readonly property string status: voice.phase === VoiceEntry.Starting ? qsTr("Opening the microphone…")
        : voice.phase === VoiceEntry.Listening ? qsTr("Listening…") : qsTr("Taking down the last words…")

    spacing: Theme.gap12

    LevelMeter {
        id: meter

        Layout.preferredWidth: 64 * Theme.zoom
        Layout.leftMargin: Theme.gap4
        opacity: root.listening ? 1 : 0.4
        asks: root.listening
        onAsked: meter.level = root.voice.level()
    }
    SmallText {
        objectName: "voiceWords"
        Layout.fillWidth: true
        text: root.voice.words.length > 0 ? root.voice.words : root.status
        color: root.voice.words.length > 0 ? Theme.text : Theme.secondary
        elide: Text.ElideLeft // the latest words count
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.StaticText
        Accessible.name: root.status + " " + root.voice.words
    }
    SmallText {
        objectName: "voiceLimit"
        visible: root.voice.secondsLeft > 0
        text: qsTr("%1 s left").arg(root.voice.secondsLeft)
        color: Theme.warning
        font.weight: Font.Medium
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    IconButton {
        objectName: "cancelVoice"
        text: qsTr("Drop what was said (Esc)")
        glyph: "close"
        size: 24 * Theme.zoom
        focusPolicy: Qt.TabFocus
        onClicked: root.voice.cancel()
    }
}
