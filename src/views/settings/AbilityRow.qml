import QtQuick
import QtQuick.Layouts
import Morvane

// An ability: what it does, and why it is off when it is.
ColumnLayout {
    id: root

    required property string name
    required property string description
    required property string reason
    required property string hint

    Layout.fillWidth: true
    Layout.topMargin: Theme.gap8
    Layout.bottomMargin: Theme.gap8
    spacing: 2

    Accessible.role: Accessible.StaticText
    Accessible.name: name
    Accessible.description: description + " " + state.text

    RowLayout {
        spacing: Theme.gap8

        PlainText {
            Layout.fillWidth: true
            text: root.name
            font.pixelSize: Theme.smallSize
            font.weight: Font.Medium
        }
        Icon {
            visible: root.reason.length === 0
            name: "check"
            color: Theme.success
            implicitWidth: 16 * Theme.zoom
            implicitHeight: 16 * Theme.zoom
        }
    }
    CaptionText {
        Layout.fillWidth: true
        text: root.description
    }
    CaptionText {
        id: state

        Layout.fillWidth: true
        visible: text.length > 0
        text: root.reason.length > 0 ? root.reason : root.hint
        color: Theme.warning
    }
}
