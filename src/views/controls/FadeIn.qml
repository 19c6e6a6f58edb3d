import QtQuick
import Morvane

// How a popup comes. What only lies there for a moment, as a menu, has no way to go: the key or the click that
// follows is meant for what is below it.
Transition {
    Motion {
        property: "opacity"
        from: 0
        to: 1
        duration: Theme.fade
    }
}
