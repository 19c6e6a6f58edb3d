import QtQuick
import Morvane
import Morvane.ViewModels

// The way to what the protection is made against.
SettingsCard {
    id: root

    required property AboutViewModel about

    heading: qsTr("What this protects")

    SettingsRow {
        title: qsTr("Against whom, and what stays open")
        explanation: qsTr("What a hardware proof, the lock and the sealing do, and what they can't.")

        PushButton {
            objectName: "readThreatModel"
            text: qsTr("Read")
            onClicked: root.about.readThreatModel()
        }
    }
}
