import QtQuick
import Morvane

PlainText {
    font.pixelSize: Theme.smallSize
    lineHeightMode: Text.FixedHeight
    lineHeight: Theme.smallLine
    color: Theme.secondary
}
