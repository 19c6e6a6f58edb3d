import QtQuick
import QtQuick.Layouts
import Morvane

// What a step is about.
ColumnLayout {
    id: root

    property string text
    property string explanation

    Layout.fillWidth: true
    Layout.bottomMargin: Theme.gap12
    spacing: Theme.gap4

    PlainText {
        Layout.fillWidth: true
        text: root.text
        font.pixelSize: Theme.headingSize
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    SmallText {
        Layout.fillWidth: true
        visible: text.length > 0
        text: root.explanation
        horizontalAlignment: Text.AlignHCenter
    }
}
