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
    readonly property bool isLong: models.count > 8

    signal chosen(string name)

    function choose(name: string) {
        root.chosen(name);
        root.close();
    }

    objectName: "modelPicker"
    implicitWidth: 300 * Theme.zoom
    implicitHeight: column.implicitHeight + 2 * padding
    padding: Theme.gap8
    margins: Theme.gap8
    focus: true
    onAboutToShow: {
        search.clear();
        list.mark(current);
        models.fetch();
    }
    onVisibleChanged: if (visible) (isLong ? search : list).forceActiveFocus()
    enter: FadeIn {}

    background: Rectangle {
        radius: Theme.panelRadius
        color: Theme.floating
        border.width: Theme.lineWidth
        border.color: Theme.hairline
    }
    contentItem: Column {
        id: column

        spacing: root.isLong ? 6 : 0

        TextBox {
            id: search

            objectName: "modelSearch"
            width: parent.width
            visible: root.isLong
            placeholderText: qsTr("Search models")
            inputMethodHints: Qt.ImhNoPredictiveText
            Accessible.name: qsTr("Search models")
            onTextChanged: root.models.filter = text
            onVisibleChanged: if (visible) forceActiveFocus()

            Keys.onDownPressed: {
                list.mark(root.models.nameAt(0));
                list.forceActiveFocus();
            }
            onAccepted: if (text.length > 0 && list.count > 0) root.choose(root.models.nameAt(0))
        }
        SmallText {
            id: state

            objectName: "modelPickerState"
            width: parent.width
            padding: Theme.gap8
            visible: list.count === 0
            text: root.models.isFetching ? qsTr("Asking the server…")
                : root.models.count > 0 ? qsTr("No model has that in its name.") : root.models.problem
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        ListView {
            id: list

            property string marked // a name: its row is another one when another list arrives

            function mark(name: string) {
                list.marked = name;
                list.currentIndex = root.models.rowOf(name);
            }
            function step(rows: int) {
                list.mark(root.models.nameAt(Math.max(0, Math.min(list.currentIndex + rows, list.count - 1))));
            }

            objectName: "modelList"
            width: parent.width
            height: Math.min(contentHeight, 320 * Theme.zoom)
            clip: true
            currentIndex: -1
            cacheBuffer: 0 // a row still being made for it would be asked of a list that has become shorter
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            model: root.models.found
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Models of the server")

            T.ScrollBar.vertical: ScrollHandle {}

            delegate: T.ItemDelegate {
                id: row

                required property string edit // the name: "display" means something else to a button

                width: list.width
                implicitHeight: Theme.controlHeight
                leftPadding: Theme.gap8
                text: edit
                Accessible.name: edit
                onClicked: root.choose(row.edit)

                contentItem: PlainText {
                    text: row.edit
                    font.pixelSize: Theme.smallSize
                    font.weight: row.edit === root.current ? Font.DemiBold : Font.Normal
                    verticalAlignment: Text.AlignVCenter
                    elide: Text.ElideMiddle
                    wrapMode: Text.NoWrap
                }
                background: Rectangle {
                    radius: Theme.controlRadius
                    color: row.edit === root.current ? Theme.currentWash : "transparent"
                    border.width: row.ListView.isCurrentItem && list.activeFocus ? Theme.focusWidth : 0
                    border.color: Theme.accent

                    Wash { hovered: row.hovered }
                }
            }
            Keys.onUpPressed: step(-1)
            Keys.onDownPressed: step(1)
            Keys.onReturnPressed: if (currentIndex >= 0) root.choose(marked)
            Keys.onEnterPressed: if (currentIndex >= 0) root.choose(marked)
        }
    }
    Connections {
        target: root.models

        function onChanged() {
            list.mark(list.marked);
        }
    }
}
