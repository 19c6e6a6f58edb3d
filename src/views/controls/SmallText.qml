import QtQuick
import Morvane

PlainText {
    font.pixelSize: Theme.smallSize
    color: Theme.secondary
}
