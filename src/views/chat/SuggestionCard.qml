import QtQuick
import QtQuick.Templates as T
import Morvane

// A beginning of a message; choosing it fills the composer and sends nothing.
T.Button {
    id: root

    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    horizontalPadding: Theme.gap16
    verticalPadding: Theme.gap12

    Accessible.name: text
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()

    contentItem: SmallText {
        text: root.text.trim().replace(/:$/, "") + "…"
        color: Theme.text
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        maximumLineCount: 2
    }
    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.card
        border.width: Theme.lineWidth
        border.color: Theme.hairline

        Wash {
            radius: parent.radius
            down: root.down
            hovered: root.hovered
        }
        FocusRing {
            radius: Theme.panelRadius + Theme.focusWidth
            visible: root.visualFocus
        }
    }
}
