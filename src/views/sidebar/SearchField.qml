import QtQuick
import Morvane

// Where a search is typed. Escape empties it; in the empty field it gives the focus back.
TextBox {
    id: root

    property string purpose: qsTr("Search chats")

    signal abandoned()
    signal resultsWanted()
    signal entered()

    function clearOrAbandon() {
        if (root.text.length > 0)
            root.clear();
        else
            root.abandoned();
    }

    placeholderText: purpose
    leftPadding: 34 * Theme.zoom
    rightPadding: 34 * Theme.zoom
    inputMethodHints: Qt.ImhNoPredictiveText
    Accessible.name: purpose

    Keys.onEscapePressed: root.clearOrAbandon()
    Keys.onDownPressed: root.resultsWanted()
    Keys.onReturnPressed: root.entered()
    Keys.onEnterPressed: root.entered()

    Icon {
        x: 10 * Theme.zoom
        anchors.verticalCenter: parent.verticalCenter
        name: "search"
        color: Theme.secondary
        implicitWidth: 16 * Theme.zoom
        implicitHeight: 16 * Theme.zoom
    }
    IconButton {
        anchors.right: parent.right
        anchors.rightMargin: 2
        anchors.verticalCenter: parent.verticalCenter
        size: 28 * Theme.zoom
        visible: root.length > 0
        text: qsTr("Clear the search")
        glyph: "close"
        onClicked: {
            root.clear();
            root.forceActiveFocus();
        }
    }
}
