import QtQuick
import Morvane

PlainText {
    font.pixelSize: Theme.captionSize
    color: Theme.secondary
}
