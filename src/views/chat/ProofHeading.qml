import QtQuick
import Morvane

SmallText {
    width: parent?.width ?? 0
    topPadding: Theme.gap8
    color: Theme.text
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Heading
    Accessible.name: text
}
