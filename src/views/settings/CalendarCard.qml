pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// Where events go, and whether anything takes them.
SettingsCard {
    id: root

    required property CalendarsViewModel calendars

    heading: qsTr("Calendar")
    visible: calendars.isAvailable

    SettingsRow {
        title: qsTr("Calendar access")
        explanation: root.calendars.isTesting ? qsTr("Asking…")
            : root.calendars.message.length > 0 ? root.calendars.message
            : qsTr("Asks your desktop for its calendars, and lists them here to choose from.")
        explanationInk: root.calendars.message.length === 0 || root.calendars.isTesting ? Theme.secondary
            : root.calendars.worked ? Theme.success : Theme.danger
        Accessible.role: Accessible.StatusBar
        Accessible.name: explanation

        PushButton {
            objectName: "calendar.test"
            text: root.calendars.isTesting ? qsTr("Cancel") : qsTr("Test")
            onClicked: root.calendars.isTesting ? root.calendars.cancelTest() : root.calendars.test()
        }
    }
    Repeater {
        model: root.calendars.names

        ChoiceRow {
            required property string modelData
            required property int index

            objectName: "calendar.choice." + index
            title: modelData
            chosen: index === root.calendars.chosen
            onPicked: root.calendars.chosen = index
        }
    }
}
