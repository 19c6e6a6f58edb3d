import QtQuick
import Morvane
import Morvane.ViewModels

// The key that is held to talk while the window is in front, and Esc, which drops what is being said.
TalkKey {
    id: root

    required property VoiceEntry voice

    takesEscape: voice.phase !== VoiceEntry.Idle
    onHeld: voice.begin()
    onLetGo: voice.end()
    onEscaped: voice.cancel()

    Shortcut {
        sequence: Keymap.talk
        enabled: root.Window.activeFocusItem !== null && root.voice.isOffered && Keymap.talk.length > 0
        autoRepeat: false
        onActivated: root.hold()
    }
}
