pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The places that replies can come from, each with what leaves the machine. What can't run says why.
T.Popup {
    id: root

    required property SourceMenuViewModel sources

    signal settingsChosen()

    function choose(row: int, problem: string) {
        if (problem.length > 0)
            return;
        root.sources.choose(row);
        root.close();
    }

    objectName: "sourceMenu"
    implicitWidth: 340 * Theme.zoom
    implicitHeight: column.implicitHeight + 2 * padding
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: -height - Theme.gap4
    padding: Theme.gap8
    margins: Theme.gap8
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    enter: FadeIn {}

    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.floating
        border.width: Theme.lineWidth
        border.color: Theme.hairline
    }
    contentItem: Column {
        id: column

        spacing: 2

        ListView {
            id: list

            width: parent.width
            implicitHeight: contentHeight
            height: contentHeight
            interactive: false
            focus: true // from the first frame on
            activeFocusOnTab: true
            keyNavigationEnabled: true
            model: root.sources
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Where replies come from")

            delegate: SourceRow {
                width: list.width
                marked: ListView.isCurrentItem && list.activeFocus
                onChosen: root.choose(index, problem)
            }
            Keys.onReturnPressed: (currentItem as SourceRow)?.chosen()
            Keys.onEnterPressed: (currentItem as SourceRow)?.chosen()
            Keys.onSpacePressed: (currentItem as SourceRow)?.chosen()
        }
        CaptionText {
            width: parent.width
            visible: text.length > 0
            leftPadding: Theme.gap8
            rightPadding: Theme.gap8
            topPadding: Theme.gap4
            text: root.sources.cloudNotice
        }
        Hairline {
            width: parent.width
        }
        SidebarButton {
            objectName: "sourceSettings"
            width: parent.width
            text: qsTr("Set up a server or service…")
            glyph: "settings"
            onClicked: {
                root.close();
                root.settingsChosen();
            }
        }
    }
}
