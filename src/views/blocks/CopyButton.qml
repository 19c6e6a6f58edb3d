import QtQuick
import Morvane

// Copies something, and says so for a moment.
IconButton {
    id: root

    required property string subject // "the code"

    size: 28 * Theme.zoom
    text: copied.running ? qsTr("Copied") : qsTr("Copy %1").arg(subject)
    glyph: copied.running ? "check" : "copy"
    onClicked: copied.restart()

    Timer {
        id: copied

        interval: 2000
    }
}
