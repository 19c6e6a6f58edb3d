import QtQuick
import Morvane

// Items with a dot or counted from 1; the words know which.
ProseText {
    required property int index
    required property var content

    objectName: "list"
    width: parent?.width ?? 0
    words: content.words
    activeFocusOnTab: index === 0 || words.hasLinks

    Accessible.role: Accessible.List
}
