import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// Where replies come from, and the menu to change it.
T.Button {
    id: root

    required property SourceMenuViewModel sources
    readonly property bool menuOpen: (menu.item as T.Popup)?.opened ?? false

    signal settingsChosen()

    objectName: "sourceButton"
    implicitWidth: Math.ceil(words.implicitWidth) + place.width + mark.width + 4 * Theme.gap8
    implicitHeight: Theme.controlHeight
    horizontalPadding: Theme.gap8

    Accessible.name: qsTr("Replies come from %1").arg(sources.name)
    Accessible.description: sources.destination
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()
    onClicked: {
        menu.wanted = true;
        const places = menu.item as T.Popup;
        places.opened ? places.close() : places.open();
    }

    contentItem: Row {
        spacing: Theme.gap8

        Icon {
            id: place

            anchors.verticalCenter: parent.verticalCenter
            name: root.sources.glyph
            color: Theme.secondary
            width: 16 * Theme.zoom
            height: 16 * Theme.zoom
        }
        PlainText {
            id: words

            objectName: "activeSource"
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, root.availableWidth - place.width - mark.width - 2 * Theme.gap8)
            text: root.sources.name
            font.pixelSize: Theme.smallSize
            font.weight: Font.Medium
            elide: Text.ElideMiddle
            wrapMode: Text.NoWrap
        }
        Icon {
            id: mark

            anchors.verticalCenter: parent.verticalCenter
            name: "chevron-down"
            color: Theme.secondary
            width: 12 * Theme.zoom
            height: 12 * Theme.zoom
        }
    }
    background: Wash {
        down: root.down || root.menuOpen
        hovered: root.hovered

        FocusRing { visible: root.visualFocus }
    }

    Later {
        id: menu

        anchors.fill: parent
        part: "chat/SourceMenu.qml"
        given: ({ sources: root.sources })
        onLoaded: (item as SourceMenu).settingsChosen.connect(root.settingsChosen)
    }
}
