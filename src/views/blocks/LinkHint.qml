import QtQuick
import Morvane

// Where a link leads, above a place of its parent.
Hint {
    id: root

    property string address
    property point place

    x: Math.round(place.x - implicitWidth / 2)
    y: Math.round(place.y - implicitHeight - Theme.gap12)
    delay: 200
    timeout: -1
    visible: address.length > 0
    text: address.length > 100 ? address.slice(0, 70) + "…" + address.slice(-25) : address
}
