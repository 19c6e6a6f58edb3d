import QtQuick
import QtQuick.Templates as T
import Morvane

// A modal panel in the middle of the window: a heading and what it is about.
T.Dialog {
    id: root

    property int widest: 420 * Theme.zoom
    readonly property Item ground: T.Overlay.overlay

    parent: ground
    anchors.centerIn: ground
    implicitWidth: Math.min(widest, (ground?.width ?? widest) - 2 * Theme.gap24)
    implicitHeight: implicitHeaderHeight + implicitContentHeight + implicitFooterHeight
        + topPadding + bottomPadding
    margins: Theme.gap24
    padding: Theme.gap24
    topPadding: Theme.gap12
    modal: true
    focus: true

    T.Overlay.modal: Rectangle { color: Theme.scrim }

    header: TitleText {
        text: root.title
        padding: Theme.gap24
        bottomPadding: 0
    }
    background: Rectangle {
        radius: Theme.cardRadius
        color: Theme.floating
        border.width: Theme.lineWidth
        border.color: Theme.hairline
    }
    enter: FadeIn {}
    exit: FadeOut {}
}
