pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane
import Morvane.ViewModels

// Which program this is, whose work it stands on, and what to do when something is wrong with it.
SettingsPage {
    id: root

    required property AboutViewModel about
    required property ShellViewModel shell
    property bool shown: false
    property bool keepsReports: false // none can be deleted

    title: qsTr("About")
    onShownChanged: if (shown) root.about.look()

    SettingsCard {
        heading: root.shell.productName

        Repeater {
            model: root.about.facts.length / 2

            SettingsRow {
                required property int index

                title: root.about.facts[2 * index]
                explanation: root.about.facts[2 * index + 1]
            }
        }
        SettingsRow {
            title: qsTr("Updates")
            explanation: root.about.updates.length > 0 ? root.about.updates : qsTr("Looking…")
        }
        RowLayout {
            Layout.topMargin: Theme.gap8
            Layout.bottomMargin: Theme.gap8
            spacing: Theme.gap8

            PushButton {
                objectName: "readReleaseNotes"
                text: qsTr("Release Notes")
                onClicked: root.about.readReleaseNotes()
            }
            PushButton {
                objectName: "readGuide"
                text: qsTr("How to Use It")
                onClicked: root.about.readGuide()
            }
            PushButton {
                objectName: "copyAbout"
                text: qsTr("Copy All")
                onClicked: root.shell.copy(root.about.wholeText)
            }
        }
    }
    SettingsCard {
        heading: qsTr("When something is wrong")

        SettingsRow {
            title: qsTr("Report a problem")
            explanation: qsTr("Puts version, desktop, settings without secrets and the last lines of the log into a text. You read it first and save it where you like; nothing is sent.")

            PushButton {
                objectName: "reportProblem"
                text: qsTr("Report…")
                onClicked: root.about.reportProblem()
            }
        }
        SettingsRow {
            title: qsTr("Crashes")
            explanation: root.about.crashCount === 0 ? qsTr("No report of a crash is on this computer.")
                : qsTr("Reports on this computer: %1. They say where in the program it happened, and hold nothing of yours.").arg(root.about.crashCount)

            PushButton {
                objectName: "readCrash"
                visible: root.about.crashCount > 0
                text: qsTr("Show Newest")
                onClicked: root.about.readCrash()
            }
            PushButton {
                objectName: "deleteCrashes"
                visible: root.about.crashCount > 0 && !root.keepsReports
                text: qsTr("Delete All")
                onClicked: root.about.deleteCrashes()
            }
        }
    }
    SettingsCard {
        heading: qsTr("What it is built on")

        SmallText {
            Layout.fillWidth: true
            Layout.bottomMargin: Theme.gap8
            text: root.about.librariesNote
        }
        Repeater {
            model: root.about.libraries.length / 2

            SettingsRow {
                id: row

                required property int index
                readonly property string library: root.about.libraries[2 * index]

                title: library
                explanation: root.about.libraries[2 * index + 1]

                PushButton {
                    objectName: "licence." + row.library
                    text: qsTr("Licence")
                    Accessible.name: qsTr("Licence of %1").arg(row.library)
                    onClicked: root.about.readLicence(row.library)
                }
            }
        }
    }
}
