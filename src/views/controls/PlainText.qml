import QtQuick
import Morvane

// Words of the window. Never rich text, which could load images.
Text {
    textFormat: Text.PlainText
    color: Theme.text
    font.pixelSize: Theme.bodySize
    lineHeightMode: Text.FixedHeight
    lineHeight: Theme.lineOf(font.pixelSize)
    wrapMode: Text.Wrap
}
