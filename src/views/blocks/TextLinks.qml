pragma ComponentBehavior: Bound

import QtQuick

// The links of a text as assistive technology sees them: each has its words, where it leads, and opens when pressed.
Item {
    id: root

    required property var source // the text: a TextEdit with `links` and `linkAsked`

    Repeater {
        model: root.source.links

        Item {
            id: link

            required property var modelData
            property rect first
            property rect last

            function place() {
                link.first = root.source.positionToRectangle(modelData.start);
                link.last = root.source.positionToRectangle(modelData.end);
            }

            x: first.x
            y: first.y
            width: last.y > first.y ? root.source.width - x : last.x - x
            height: last.y + last.height - y
            Component.onCompleted: link.place()

            Accessible.role: Accessible.Link
            Accessible.name: modelData.words
            Accessible.description: modelData.address
            Accessible.onPressAction: root.source.linkAsked(modelData.address)

            Connections {
                target: root.source

                function onContentSizeChanged() { link.place(); }
            }
        }
    }
}
