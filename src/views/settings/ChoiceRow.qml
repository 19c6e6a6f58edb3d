import QtQuick
import Morvane

// One of a list of which one is in use.
SettingsRow {
    id: root

    property bool chosen: false

    signal picked()

    ChoiceButton {
        objectName: root.objectName + ".button"
        group: root.parent
        text: root.chosen ? qsTr("In use") : qsTr("Use")
        checked: root.chosen
        Accessible.name: root.title
        onClicked: root.picked()
    }
}
