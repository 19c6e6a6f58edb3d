import QtQuick
import QtQuick.Templates as T
import Morvane

// One line of text to fill in. Say in Accessible.name what it is for.
T.TextField {
    id: root

    property bool hasProblem: false

    implicitWidth: 240 * Theme.zoom
    implicitHeight: Math.max(Theme.controlHeight, contentHeight + topPadding + bottomPadding)
    leftPadding: 10 * Theme.zoom
    rightPadding: 10 * Theme.zoom
    topPadding: 6
    bottomPadding: 6

    font.pixelSize: Theme.smallSize
    color: enabled ? Theme.text : Theme.disabled
    placeholderTextColor: Theme.disabled
    selectionColor: Theme.selection
    selectedTextColor: Theme.text
    selectByMouse: true
    verticalAlignment: TextInput.AlignVCenter

    Accessible.description: placeholderText

    PlainText {
        x: root.leftPadding
        y: root.topPadding
        width: root.width - root.leftPadding - root.rightPadding
        height: root.height - root.topPadding - root.bottomPadding
        visible: root.length === 0 && root.preeditText.length === 0
        text: root.placeholderText
        font: root.font
        color: root.placeholderTextColor
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.card
        border.width: root.activeFocus ? Theme.focusWidth : Theme.lineWidth
        border.color: root.activeFocus ? Theme.accent : root.hasProblem ? Theme.danger : Theme.outline
    }
}
