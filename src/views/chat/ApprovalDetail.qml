import QtQuick
import QtQuick.Templates as T
import Morvane

// The whole of what a tool wants to do or was given, to be read and selected.
Rectangle {
    id: root

    property alias text: words.shownText

    implicitHeight: Math.min(160 * Theme.zoom, words.implicitHeight + 2 * Theme.gap8)
    radius: Theme.panelRadius
    color: Theme.code

    Flickable {
        anchors.fill: parent
        anchors.margins: Theme.gap8
        anchors.leftMargin: Theme.gap12
        contentHeight: words.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        T.ScrollBar.vertical: ScrollHandle {}

        SelectableText {
            id: words

            width: parent.width
            font.family: Theme.monoFamily
            font.pixelSize: Theme.smallSize
        }
    }
    FocusRing {
        radius: parent.radius + Theme.focusWidth
        visible: words.activeFocus && Theme.rings
    }
}
