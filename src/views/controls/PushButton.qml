import QtQuick
import QtQuick.Templates as T
import Morvane

// A button with words on it.
T.Button {
    id: root

    enum Rank { Plain, Primary, Danger }

    property int rank: PushButton.Plain
    readonly property color ink: !enabled ? Theme.disabled
        : rank === PushButton.Primary ? Theme.accentInk
        : rank === PushButton.Danger ? Theme.danger : Theme.text

    implicitWidth: Math.max(72 * Theme.zoom, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.controlHeight, implicitContentHeight + topPadding + bottomPadding)
    horizontalPadding: 14 * Theme.zoom
    verticalPadding: 6

    Accessible.name: text
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: Text {
        textFormat: Text.PlainText
        text: root.text
        font.pixelSize: Theme.smallSize
        font.weight: Font.Medium
        color: root.ink
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: root.rank === PushButton.Primary && root.enabled ? Theme.accent : Theme.card
        border.width: root.rank === PushButton.Primary && root.enabled ? 0 : Theme.lineWidth
        border.color: root.enabled ? Theme.outline : Theme.hairline

        Wash {
            radius: parent.radius
            down: root.down
            hovered: root.hovered
        }
        FocusRing { // one of the button's own colour needs a gap to be seen
            anchors.margins: (root.rank === PushButton.Primary ? -2 : -1) * Theme.focusWidth
            visible: root.visualFocus
        }
    }
}
