import QtQuick
import Morvane

// What a page or a panel is called.
PlainText {
    font.pixelSize: Theme.titleSize
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
