import QtQuick
import Morvane

ProseText {
    required property int index
    required property var content

    objectName: "paragraph"
    width: parent?.width ?? 0
    words: content.words
    activeFocusOnTab: index === 0 || words.hasLinks
}
