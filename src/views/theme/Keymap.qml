pragma Singleton

import QtQuick

// The window's keys, for the shortcuts themselves and for the sheet that lists them. The window sets the first.
QtObject {
    property string talk // empty for none
    readonly property string newChat: "Ctrl+N"
    readonly property string newGhostChat: "Ctrl+Shift+N"
    readonly property string settings: "Ctrl+,"
    readonly property string sidebar: "F9"
    readonly property string search: "Ctrl+K"
    readonly property string find: "Ctrl+F"
    readonly property string nextFind: "F3"
    readonly property string previousFind: "Shift+F3"
    readonly property string nextChat: "Ctrl+PgDown"
    readonly property string previousChat: "Ctrl+PgUp"
    readonly property string attach: "Ctrl+O"
    readonly property string composer: "Ctrl+J"
    readonly property string copyAnswer: "Ctrl+Shift+C"
    readonly property string toEnd: "Alt+End"
    readonly property string lock: "Ctrl+L"
    readonly property string sheet: "Ctrl+?"
    readonly property var zoomIn: ["Ctrl++", "Ctrl+="] // the second where plus needs Shift
    readonly property string zoomOut: "Ctrl+-"
    readonly property string usualSize: "Ctrl+0"
    readonly property string quit: "Ctrl+Q"

    readonly property var sheetRows: (talk.length > 0 ? [{ keys: talk, action: "Hold to talk, Esc drops it" }] : []).concat([
        { keys: "Return", action: "Send the message" },
        { keys: "Shift+Return", action: "Start a new line" },
        { keys: "Esc", action: "Stop the reply, or decline what it asks for" },
        { keys: "Page Up, Page Down", action: "Scroll the chat" },
        { keys: toEnd, action: "Go to the end of the chat" },
        { keys: copyAnswer, action: "Copy the last answer" },
        { keys: "Ctrl+A", action: "Select the reply, again the whole chat" },
        { keys: "Menu, Shift+F10", action: "What can be done here" },
        { keys: composer, action: "Go to the message field" },
        { keys: attach, action: "Attach files" },
        { keys: newChat, action: "New chat" },
        { keys: newGhostChat, action: "New Ghost chat, which is never saved" },
        { keys: search, action: "Search the chats" },
        { keys: find + ", " + nextFind + ", " + previousFind, action: "Find in this chat, next, previous" },
        { keys: previousChat + ", " + nextChat, action: "Go to the chat above or below in the list" },
        { keys: "F2", action: "Rename the chat under the list's marker" },
        { keys: "Delete", action: "Delete the chat under the list's marker" },
        { keys: sidebar, action: "Show or hide the list of chats" },
        { keys: zoomIn[0] + ", " + zoomOut, action: "Show everything larger, smaller" },
        { keys: usualSize, action: "Show everything at its usual size" },
        { keys: settings, action: "Settings" },
        { keys: lock, action: "Lock, where that is switched on in the settings" },
        { keys: sheet, action: "This list" },
        { keys: quit, action: "Quit" }
    ])
}
