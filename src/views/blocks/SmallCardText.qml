import Morvane

CardText {
    font.pixelSize: Theme.smallSize
    color: Theme.secondary
}
