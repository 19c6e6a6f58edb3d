import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// A model has other weights than when it was first seen: what changed, and taking the change for right.
ColumnLayout {
    id: root

    required property LocalModelViewModel local
    property bool open: false

    spacing: Theme.gap8

    RowLayout {
        Layout.fillWidth: true
        spacing: Theme.gap8

        Icon {
            Layout.alignment: Qt.AlignTop
            name: "warning"
            color: Theme.warning
        }
        SmallText {
            objectName: "integrityWarning"
            Layout.fillWidth: true
            text: root.local.warning
            color: Theme.warning
            Accessible.role: Accessible.Notification
            Accessible.name: text
        }
    }
    CardText {
        objectName: "fingerprints"
        Layout.fillWidth: true
        visible: root.open
        text: root.local.fingerprints
        font.family: Theme.monoFamily
        font.pixelSize: Theme.captionSize
        wrapMode: TextEdit.WrapAnywhere
        Accessible.ignored: false
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    RowLayout {
        Layout.alignment: Qt.AlignRight
        spacing: Theme.gap8

        PushButton {
            objectName: "lookAtFingerprints"
            text: root.open ? qsTr("Hide") : qsTr("Look")
            onClicked: root.open = !root.open
        }
        PushButton {
            objectName: "acceptFingerprints"
            text: qsTr("I Updated It Myself")
            onClicked: root.local.acceptFingerprints()
        }
    }
}
