import Morvane

// Says how many entries a card leaves out.
CaptionText {
    required property int count

    visible: count > 0
    text: qsTr("and %1 more").arg(count)
}
