import QtQuick
import Morvane

// What the gallery appearance shows behind everything: a slow fall of colour with two soft hills. Nothing in
// the other appearances.
Item {
    id: root

    readonly property var tones: Theme.backdropColors[Theme.backdrop] ?? ["black", "black"]

    visible: Theme.gallery
    clip: true

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0; color: root.tones[0] }
            GradientStop { position: 1; color: root.tones[1] }
        }
    }
    Rectangle {
        x: -width / 3
        y: root.height * 0.72
        width: root.width * 1.1
        height: width
        radius: width / 2
        color: Qt.alpha(root.tones[0], 0.45)
    }
    Rectangle {
        x: root.width * 0.45
        y: root.height * 0.82
        width: root.width * 0.9
        height: width
        radius: width / 2
        color: Qt.alpha(root.tones[0], 0.6)
    }
}
