import QtQuick
import Morvane

// Where a link of its parent leads, above the link.
Hint {
    id: root

    required property var source // the text: a TextEdit with `pointedLink` and `linkPlace`
    readonly property string address: source.pointedLink

    objectName: "linkHint"
    x: Math.round(source.linkPlace.x - implicitWidth / 2)
    y: Math.round(source.linkPlace.y - implicitHeight - Theme.gap12)
    delay: 200
    timeout: -1
    visible: address.length > 0
    text: address.length > 100 ? address.slice(0, 70) + "…" + address.slice(-25) : address
}
