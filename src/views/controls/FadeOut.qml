import QtQuick
import Morvane

// How a popup goes that stood in the way.
Transition {
    Motion {
        property: "opacity"
        from: 1
        to: 0
        duration: Theme.fade
    }
}
