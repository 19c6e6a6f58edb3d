import QtQuick
import QtQuick.Layouts
import Morvane

// What stands above or below the chat for as long as there is something to say or to answer. It comes softly; what
// is answered is gone at once.
Later {
    id: root

    Layout.fillWidth: true
    visible: wanted
    onWantedChanged: if (wanted) coming.restart()

    Motion {
        id: coming

        target: root
        property: "opacity"
        from: 0
        to: 1
        duration: Theme.fade
    }
}
