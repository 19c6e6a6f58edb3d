import QtQuick
import QtQuick.Layouts
import Morvane

// What the list is worth, and how to check it.
ColumnLayout {
    id: root

    required property string productName
    required property string connectionLister

    spacing: Theme.gap4

    CaptionText {
        Layout.fillWidth: true
        text: qsTr("This is %1's own record of what it sent and received since it started, and which feature asked for it. It is not proof: it is the app reporting on itself, and it cannot see what it does not go through. Update checks are made by the updater and are not listed at all. The list lives in memory only, is never written to disk, and is empty again when you quit.").arg(root.productName)
    }
    CaptionText {
        Layout.topMargin: Theme.gap4
        text: qsTr("How to check this yourself")
        color: Theme.text
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }
    CaptionText {
        Layout.fillWidth: true
        text: qsTr("Let a packet filter ask before every connection of %1, or watch its connections from outside with “%2” while you use it. Each host that you see there should stand in this list too. Bytes are counted here without encryption, so on the wire there are somewhat more of them.").arg(root.productName).arg(root.connectionLister)
    }
}
