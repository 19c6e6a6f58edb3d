import QtQuick
import Morvane

PlainText {
    font.pixelSize: Theme.captionSize
    lineHeightMode: Text.FixedHeight
    lineHeight: Theme.captionLine
    color: Theme.secondary
}
