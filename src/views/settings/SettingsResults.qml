pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane

// What the search of the settings found: each row's name, and the page that it stands on. Arrow keys move a
// marker; Return goes there.
ListView {
    id: root

    signal chosen(int row)
    signal abandoned()

    function begin() {
        if (root.count === 0)
            return;
        root.currentIndex = 0;
        root.forceActiveFocus(Qt.TabFocusReason);
    }

    objectName: "settingsResults"
    spacing: 2
    clip: true
    activeFocusOnTab: count > 0
    keyNavigationEnabled: true
    highlightMoveDuration: 0
    cacheBuffer: 0 // what is made ahead may be gone with the next letter
    boundsBehavior: Flickable.StopAtBounds

    Accessible.role: Accessible.List
    Accessible.name: qsTr("Found settings")

    T.ScrollBar.vertical: ScrollHandle {}

    Keys.onReturnPressed: root.chosen(root.currentIndex)
    Keys.onEnterPressed: root.chosen(root.currentIndex)
    Keys.onEscapePressed: root.abandoned()

    delegate: T.AbstractButton {
        id: row

        required property int index
        required property string title
        required property string pageTitle

        objectName: "settingsResult." + index
        width: root.width
        implicitHeight: words.implicitHeight + 2 * Theme.gap4
        focusPolicy: Qt.NoFocus
        text: row.title
        onClicked: root.chosen(row.index)

        Accessible.role: Accessible.ListItem
        Accessible.name: row.title === row.pageTitle ? row.title : row.title + ", " + row.pageTitle
        Accessible.selected: ListView.isCurrentItem

        contentItem: Column {
            id: words

            leftPadding: Theme.gap8
            rightPadding: Theme.gap8
            topPadding: Theme.gap4

            PlainText {
                width: row.width - 2 * Theme.gap8
                text: row.title
                font.pixelSize: Theme.smallSize
                font.weight: Font.Medium
            }
            CaptionText {
                width: row.width - 2 * Theme.gap8
                visible: row.title !== row.pageTitle
                text: row.pageTitle
            }
        }
        background: Wash {
            down: row.down
            hovered: row.hovered

            FocusRing {
                anchors.margins: 0
                visible: row.ListView.isCurrentItem && root.activeFocus
            }
        }
    }
    SmallText {
        width: root.width
        visible: root.count === 0
        text: qsTr("No setting has these words.")
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
}
