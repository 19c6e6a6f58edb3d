import QtQuick
import QtQuick.Layouts
import Morvane

// A model that the local server has.
RowLayout {
    id: root

    required property string name
    required property string size
    required property bool inUse
    property bool busy: false

    signal useChosen()
    signal deleteChosen()

    objectName: "localModel"
    spacing: Theme.gap8

    Accessible.role: Accessible.ListItem
    Accessible.name: name + (size.length > 0 ? ", " + size : "") + (inUse ? ", " + qsTr("in use") : "")

    Icon {
        Layout.preferredWidth: 16 * Theme.zoom
        Layout.preferredHeight: 16 * Theme.zoom
        name: "check"
        color: root.inUse ? Theme.success : "transparent"
    }
    PlainText {
        Layout.fillWidth: true
        text: root.name
        font.pixelSize: Theme.smallSize
        font.weight: root.inUse ? Font.DemiBold : Font.Normal
        elide: Text.ElideMiddle
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
    CaptionText {
        text: root.size
        Accessible.ignored: true
    }
    PushButton {
        objectName: "useModel"
        visible: !root.inUse
        enabled: !root.busy
        text: qsTr("Use")
        Accessible.name: qsTr("Use %1").arg(root.name)
        onClicked: root.useChosen()
    }
    IconButton {
        objectName: "deleteModel"
        enabled: !root.busy
        glyph: "trash"
        text: qsTr("Delete %1").arg(root.name)
        onClicked: root.deleteChosen()
    }
}
