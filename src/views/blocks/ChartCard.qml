import QtQuick
import Morvane

// A chart whose points tell their values under the pointer, and to the arrow keys.
DataCard {
    id: root

    required property var content
    required property string plainText

    objectName: "chart"

    Accessible.role: Accessible.Chart
    Accessible.name: (content.isLine ? qsTr("Line chart") : qsTr("Bar chart"))
        + (content.title.length > 0 ? ": " + content.title : "")
    Accessible.description: plainText

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
            width: value.implicitWidth + 16 * Theme.zoom
            height: value.implicitHeight + 8
            radius: 6 * Theme.zoom
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
