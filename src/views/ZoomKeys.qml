import QtQuick
import Morvane
import Morvane.ViewModels

// The keys, and the wheel with Ctrl, that show everything larger or smaller.
ZoomWheel {
    id: root

    required property ShellViewModel shell

    onTurned: steps => root.shell.zoomBy(steps)

    Shortcut { sequences: Keymap.zoomIn; onActivated: root.shell.zoomBy(1) }
    Shortcut { sequence: Keymap.zoomOut; onActivated: root.shell.zoomBy(-1) }
    Shortcut { sequence: Keymap.usualSize; onActivated: root.shell.zoomBy(0) }
}
