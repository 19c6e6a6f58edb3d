pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Morvane
import Morvane.ViewModels

// The models that the server lists, asked for each time it opens.
T.Popup {
    id: root

    required property ServerModelsViewModel models
    property string current

    signal chosen(string name)

    function choose(name: string) {
        root.chosen(name);
        root.close();
    }

    objectName: "modelPicker"
    implicitWidth: 300
    implicitHeight: Math.max(state.visible ? state.implicitHeight : 0, list.height) + 2 * padding
    padding: 6
    margins: 8
    focus: true
    onAboutToShow: models.fetch()
    onOpened: list.forceActiveFocus()

    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.floating
        border.width: 1
        border.color: Theme.hairline
    }
    contentItem: Item {
        SmallText {
            id: state

            objectName: "modelPickerState"
            width: parent.width
            padding: Theme.gap8
            visible: list.count === 0
            text: root.models.isFetching ? qsTr("Asking the server…") : root.models.problem
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        ListView {
            id: list

            width: parent.width
            height: Math.min(contentHeight, 320)
            clip: true
            keyNavigationEnabled: true
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            model: root.models.names
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Models of the server")

            T.ScrollBar.vertical: ScrollHandle {}

            delegate: T.ItemDelegate {
                id: row

                required property string modelData
                required property int index

                width: list.width
                implicitHeight: Theme.controlHeight
                leftPadding: Theme.gap8
                text: modelData
                Accessible.name: modelData
                onClicked: root.choose(modelData)

                contentItem: PlainText {
                    text: row.modelData
                    font.pixelSize: Theme.smallSize
                    font.weight: row.modelData === root.current ? Font.DemiBold : Font.Normal
                    verticalAlignment: Text.AlignVCenter
                    elide: Text.ElideMiddle
                    wrapMode: Text.NoWrap
                }
                background: Rectangle {
                    radius: Theme.controlRadius
                    color: row.hovered ? Theme.hoverWash : row.modelData === root.current ? Theme.currentWash : "transparent"
                    border.width: row.ListView.isCurrentItem && list.activeFocus ? Theme.focusWidth : 0
                    border.color: Theme.accent
                }
            }
            Keys.onReturnPressed: if (currentIndex >= 0) root.choose(root.models.names[currentIndex])
            Keys.onEnterPressed: if (currentIndex >= 0) root.choose(root.models.names[currentIndex])
        }
    }
}
