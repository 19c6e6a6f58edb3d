import QtQuick
import Morvane

// The keys that work wherever the focus is in the main window.
Item {
    id: root

    property bool asks: false // a tool waits for an answer

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

    Shortcut { sequence: "Esc"; enabled: root.asks; autoRepeat: false; onActivated: root.declined() }
    Shortcut { sequence: Keymap.newChat; onActivated: root.newChat() }
    Shortcut { sequence: Keymap.newGhostChat; onActivated: root.newGhostChat() }
    Shortcut { sequence: Keymap.settings; onActivated: root.settings() }
    Shortcut { sequence: Keymap.sidebar; onActivated: root.sidebar() }
    Shortcut { sequence: Keymap.search; onActivated: root.search() }
    Shortcut { sequence: Keymap.find; onActivated: root.find() }
    Shortcut { sequence: Keymap.nextFind; onActivated: root.stepFind(1) }
    Shortcut { sequence: Keymap.previousFind; onActivated: root.stepFind(-1) }
    Shortcut { sequence: Keymap.nextChat; onActivated: root.switchChat(1) }
    Shortcut { sequence: Keymap.previousChat; onActivated: root.switchChat(-1) }
    Shortcut { sequence: Keymap.attach; onActivated: root.attach() }
    Shortcut { sequence: Keymap.composer; onActivated: root.composer() }
    Shortcut { sequence: Keymap.copyAnswer; onActivated: root.copyAnswer() }
    Shortcut { sequence: "PgUp"; onActivated: root.page(-1) }
    Shortcut { sequence: "PgDown"; onActivated: root.page(1) }
    Shortcut { sequence: Keymap.toEnd; onActivated: root.toEnd() }
    Shortcut { sequence: Keymap.lock; onActivated: root.lock() }
    Shortcut { sequence: Keymap.sheet; onActivated: root.sheet() }
    Shortcut { sequence: Keymap.quit; onActivated: Qt.quit() }
}
