import QtQuick
import QtQuick.Templates as T
import Morvane

// The name of a control, under the pointer.
T.ToolTip {
    id: root

    x: parent ? Math.round((parent.width - implicitWidth) / 2) : 0
    y: -implicitHeight - Theme.gap8
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    margins: Theme.gap8
    horizontalPadding: Theme.gap8
    verticalPadding: Theme.gap4
    delay: 600
    timeout: 5000
    enter: FadeIn {}
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: CaptionText {
        text: root.text
        color: Theme.page
        wrapMode: Text.NoWrap
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.text
    }
}
