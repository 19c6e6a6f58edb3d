import QtQuick
import Morvane

// A heading inside a reply: three sizes for four levels.
ProseText {
    id: root

    required property int index
    required property var content
    readonly property int level: content.level

    objectName: "heading"
    width: parent?.width ?? 0
    topPadding: index > 0 ? Theme.gap8 : 0
    words: content.words
    activeFocusOnTab: index === 0 || words.hasLinks
    lineHeight: font.pixelSize * 1.3
    font.pixelSize: level === 1 ? Theme.titleSize : level === 2 ? Theme.subtitleSize : Theme.bodySize
    font.weight: Font.DemiBold

    Accessible.role: Accessible.Heading
}
