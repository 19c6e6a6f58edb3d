import QtQuick
import QtQuick.Shapes

// The ghost without a face, on a square of 48 units.
Shape {
    id: root

    property color skin

    width: 48
    height: 48

    ShapePath {
        strokeColor: "transparent"
        fillGradient: LinearGradient {
            x1: 14
            y1: 6
            x2: 34
            y2: 44

            GradientStop { position: 0; color: Qt.lighter(root.skin, 1.18) }
            GradientStop { position: 1; color: root.skin }
        }

        PathSvg {
            path: "M9 42.5V22a15 15 0 0 1 30 0v20.5c0 1.3-1.5 2-2.5 1.2L33 40.8a1.6 1.6 0 0 0-2 0l-3 2.5a1.6 1.6 0 0 1-2 0l-1-.8a1.6 1.6 0 0 0-2 0l-1 .8a1.6 1.6 0 0 1-2 0l-3-2.5a1.6 1.6 0 0 0-2 0l-3.5 2.9c-1 .8-2.5.1-2.5-1.2z"
        }
    }
    // A little light on the left shoulder.
    ShapePath {
        strokeColor: Qt.rgba(1, 1, 1, 0.35)
        strokeWidth: 1.6
        fillColor: "transparent"
        capStyle: ShapePath.RoundCap

        PathSvg { path: "M12.6 22.5a11.4 11.4 0 0 1 4.2-8.8" }
    }
}
