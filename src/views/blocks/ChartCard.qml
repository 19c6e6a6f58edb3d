import QtQuick
import Morvane

// A chart whose points tell their values under the pointer, and to the arrow keys. One of many points is wider than
// the words around it.
Item {
    id: root

    required property var content
    required property string plainText
    property real room: 0
    readonly property real wanted: content.values.length * 36 * Theme.zoom + 2 * Theme.gap16
    readonly property real excess: Math.max(0, Math.min(wanted, room) - width)

    objectName: "chart"
    width: parent?.width ?? 0
    implicitHeight: card.implicitHeight

    Accessible.role: Accessible.Chart
    Accessible.name: (content.isLine ? qsTr("Line chart") : qsTr("Bar chart"))
        + (content.title.length > 0 ? ": " + content.title : "")
    Accessible.description: plainText

    DataCard {
        id: card

        x: -Math.round(root.excess / 2)
        width: root.width + root.excess

        CardText {
            width: parent.width
            visible: text.length > 0
            text: root.content.title
            font.weight: Font.DemiBold
        }
        CaptionText {
            objectName: "logarithmic"
            visible: plot.isLogarithmic
            text: qsTr("Logarithmic scale")
        }
        ChartPlot {
            id: plot

            objectName: "chartPlot"
            width: parent.width
            height: 220 * Theme.zoom
            isLine: root.content.isLine
            logScale: root.content.logScale
            values: root.content.values
            labels: root.content.labels
            current: hover.hovered ? plot.indexAt(hover.point.position.x) : activeFocus ? focusedPoint : -1
            color: Theme.accent
            textColor: Theme.secondary
            gridColor: Theme.hairline
            fontSize: Theme.captionSize
            activeFocusOnTab: true

            property int focusedPoint: 0
            readonly property int last: root.content.values.length - 1
            readonly property string currentWords: current < 0 ? ""
                : root.content.labels[current] + ": " + root.content.displays[current]

            Accessible.role: Accessible.Graphic
            Accessible.name: currentWords.length > 0 ? currentWords : qsTr("Chart, use the arrow keys for its values")

            Keys.onLeftPressed: focusedPoint = Math.max(0, focusedPoint - 1)
            Keys.onRightPressed: focusedPoint = Math.min(last, focusedPoint + 1)

            HoverHandler { id: hover }
            FocusRing { visible: plot.activeFocus && Theme.rings }
            Rectangle {
                readonly property point tip: plot.current >= 0 ? plot.tipOf(plot.current) : Qt.point(0, 0)

                x: Math.max(0, Math.min(plot.width - width, tip.x - width / 2))
                y: Math.max(0, tip.y - height - Theme.gap8)
                visible: plot.current >= 0
                width: value.implicitWidth + 2 * Theme.gap8
                height: value.implicitHeight + Theme.gap8
                radius: Theme.controlRadius
                color: Theme.text

                CaptionText {
                    id: value

                    objectName: "chartValue"
                    anchors.centerIn: parent
                    text: plot.currentWords
                    color: Theme.page
                    wrapMode: Text.NoWrap
                }
            }
        }
    }
}
