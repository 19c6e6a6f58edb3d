import QtQuick
import QtQuick.Layouts
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
    implicitHeight: Math.max(44, words.implicitHeight + 2 * Theme.gap4)
    leftPadding: Theme.gap8
    rightPadding: Theme.gap8

    Accessible.name: qsTr("Replies come from %1").arg(sources.name)
    Accessible.description: sources.destination
    Keys.onReturnPressed: root.clicked()
    Keys.onEnterPressed: root.clicked()
    onClicked: {
        menu.wanted = true;
        const places = menu.item as T.Popup;
        places.opened ? places.close() : places.open();
    }

    contentItem: RowLayout {
        spacing: Theme.gap8

        Icon {
            name: root.sources.glyph
            color: Theme.text
            implicitWidth: 18 * Theme.zoom
            implicitHeight: 18 * Theme.zoom
        }
        ColumnLayout {
            id: words

            spacing: 0

            PlainText {
                objectName: "activeSource"
                Layout.fillWidth: true
                text: root.sources.name
                font.pixelSize: Theme.smallSize
                font.weight: Font.DemiBold
                elide: Text.ElideMiddle
                wrapMode: Text.NoWrap
            }
            CaptionText {
                Layout.fillWidth: true
                text: root.sources.destination
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
            }
        }
        Icon {
            name: "chevron-down"
            color: Theme.secondary
            implicitWidth: 14 * Theme.zoom
            implicitHeight: 14 * Theme.zoom
        }
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: root.down || root.menuOpen ? Theme.pressWash : root.hovered ? Theme.hoverWash : "transparent"

        FocusRing { visible: root.visualFocus }
    }

    Later {
        id: menu

        y: root.height + 4
        part: "sidebar/SourceMenu.qml"
        given: ({ sources: root.sources })
        onLoaded: (item as SourceMenu).settingsChosen.connect(root.settingsChosen)
    }
}
