import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Morvane

// What Ghost mode is and what its button does now, below the button.
T.ToolTip {
    id: root

    required property GhostButton button

    objectName: "ghostCard"
    parent: button
    x: button.width - width
    y: button.height + 6
    implicitWidth: 300 * Theme.zoom
    implicitHeight: content.implicitHeight + topPadding + bottomPadding
    margins: Theme.gap8
    padding: Theme.gap16
    delay: button.pinned || button.visualFocus ? 0 : 500
    timeout: -1
    visible: (button.pinned || ((button.hovered || button.visualFocus) && !button.down))
        && button.ghosts.questionId.length === 0
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent

    contentItem: ColumnLayout {
        id: content

        spacing: Theme.gap8

        RowLayout {
            spacing: Theme.gap8

            Icon {
                name: "ghost"
                color: Theme.ghost
                implicitWidth: 20 * Theme.zoom
                implicitHeight: 20 * Theme.zoom
            }
            PlainText {
                Layout.fillWidth: true
                text: root.button.ghosts.explainer.title
                font.pixelSize: Theme.smallSize
                font.weight: Font.DemiBold
            }
        }
        SmallText {
            Layout.fillWidth: true
            text: root.button.ghosts.explainer.body
        }
        SmallText {
            Layout.fillWidth: true
            text: root.button.ghosts.explainer.stateLine
            color: root.button.ghosts.isOn ? Theme.ghost : Theme.text
            font.weight: Font.Medium
        }
    }
    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.floating
        border.width: Theme.lineWidth
        border.color: Theme.hairline
    }
    enter: FadeIn {}
    exit: FadeOut {}
}
