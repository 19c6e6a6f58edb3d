import QtQuick
import Morvane

// What a page or a panel is called.
PlainText {
    font.pixelSize: Theme.titleSize
    font.weight: Font.DemiBold
    lineHeightMode: Text.FixedHeight
    lineHeight: Theme.titleLine
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
