import QtQuick
import Morvane

// The keys that work wherever the focus is in the main window.
Item {
    id: root

    property bool asks: false // a tool waits for an answer
    // A window whose own window has the focus counts as active, and newer toolkits give it the keys as well: those that
    // both know would then do nothing.
    readonly property bool here: Window.activeFocusItem !== null

    signal declined()
    signal newChat()
    signal newGhostChat()
    signal settings()
    signal sidebar()
    signal search()
    signal find()
    signal stepFind(int direction)
    signal switchChat(int step)
    signal attach()
    signal composer()
    signal copyAnswer()
    signal page(int direction)
    signal toEnd()
    signal lock()
    signal sheet()

    Shortcut { sequence: "Esc"; enabled: root.asks && root.here; autoRepeat: false; onActivated: root.declined() }
    Shortcut { sequence: Keymap.newChat; enabled: root.here; onActivated: root.newChat() }
    Shortcut { sequence: Keymap.newGhostChat; enabled: root.here; onActivated: root.newGhostChat() }
    Shortcut { sequence: Keymap.settings; enabled: root.here; onActivated: root.settings() }
    Shortcut { sequence: Keymap.sidebar; enabled: root.here; onActivated: root.sidebar() }
    Shortcut { sequence: Keymap.search; enabled: root.here; onActivated: root.search() }
    Shortcut { sequence: Keymap.find; enabled: root.here; onActivated: root.find() }
    Shortcut { sequence: Keymap.nextFind; enabled: root.here; onActivated: root.stepFind(1) }
    Shortcut { sequence: Keymap.previousFind; enabled: root.here; onActivated: root.stepFind(-1) }
    Shortcut { sequence: Keymap.nextChat; enabled: root.here; onActivated: root.switchChat(1) }
    Shortcut { sequence: Keymap.previousChat; enabled: root.here; onActivated: root.switchChat(-1) }
    Shortcut { sequence: Keymap.attach; enabled: root.here; onActivated: root.attach() }
    Shortcut { sequence: Keymap.composer; enabled: root.here; onActivated: root.composer() }
    Shortcut { sequence: Keymap.copyAnswer; enabled: root.here; onActivated: root.copyAnswer() }
    Shortcut { sequence: "PgUp"; enabled: root.here; onActivated: root.page(-1) }
    Shortcut { sequence: "PgDown"; enabled: root.here; onActivated: root.page(1) }
    Shortcut { sequence: Keymap.toEnd; enabled: root.here; onActivated: root.toEnd() }
    Shortcut { sequence: Keymap.lock; enabled: root.here; onActivated: root.lock() }
    Shortcut { sequence: Keymap.sheet; enabled: root.here; onActivated: root.sheet() }
    Shortcut { sequence: Keymap.quit; enabled: root.here; onActivated: Qt.quit() }
}
