import QtQuick
import Morvane
import Morvane.ViewModels

// The keys, and the wheel with Ctrl, that show everything larger or smaller.
ZoomWheel {
    id: root

    required property ShellViewModel shell
    readonly property bool here: Window.activeFocusItem !== null // as for the window's other keys

    onTurned: steps => root.shell.zoomBy(steps)

    Shortcut { sequences: Keymap.zoomIn; enabled: root.here; onActivated: root.shell.zoomBy(1) }
    Shortcut { sequence: Keymap.zoomOut; enabled: root.here; onActivated: root.shell.zoomBy(-1) }
    Shortcut { sequence: Keymap.usualSize; enabled: root.here; onActivated: root.shell.zoomBy(0) }
}
