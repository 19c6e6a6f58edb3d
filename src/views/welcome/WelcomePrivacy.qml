pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane

// Second step: what stays private, in sentences that can be checked.
ColumnLayout {
    id: root

    required property string keychainNotice // where the key is, when it isn't in the keyring

    signal ledgerChosen()

    spacing: Theme.gap12

    WelcomeHeading {
        text: qsTr("What stays private")
        explanation: qsTr("You need not believe any of it.")
    }
    Repeater {
        model: [
            {
                glyph: "network",
                sentence: qsTr("Every request that leaves this program is in one list."),
                check: qsTr("The network ledger names each host, what it was asked for and how many bytes went. What was refused stands there as “Blocked”.")
            },
            {
                glyph: "sealed",
                sentence: qsTr("Your chats are sealed on the disk."),
                check: (root.keychainNotice.length > 0 ? root.keychainNotice : qsTr("The key is in your keyring."))
                    + " " + qsTr("Search the stored file for a word of yours: it isn't there.")
            },
            {
                glyph: "computer",
                sentence: qsTr("Pictures, notes about you and text from your screen go to no service."),
                check: qsTr("Only a model on this computer or on your network gets them. Ask one elsewhere about a picture, and it is refused.")
            }
        ]

        delegate: Rectangle {
            id: card

            required property var modelData

            Layout.fillWidth: true
            implicitHeight: row.implicitHeight + 2 * Theme.gap16
            radius: Theme.cardRadius
            color: Theme.card
            border.width: Theme.lineWidth
            border.color: Theme.hairline

            RowLayout {
                id: row

                anchors.fill: parent
                anchors.margins: Theme.gap16
                spacing: Theme.gap16

                Icon {
                    Layout.alignment: Qt.AlignTop
                    implicitWidth: 24 * Theme.zoom
                    implicitHeight: 24 * Theme.zoom
                    name: card.modelData.glyph
                    color: Theme.accent
                }
                ColumnLayout {
                    spacing: Theme.gap4

                    PlainText {
                        Layout.fillWidth: true
                        text: card.modelData.sentence
                        font.weight: Font.DemiBold
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                    SmallText {
                        Layout.fillWidth: true
                        text: card.modelData.check
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                }
            }
        }
    }
    PushButton {
        objectName: "openLedger"
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.gap4
        text: qsTr("Open the Network Ledger")
        onClicked: root.ledgerChosen()
    }
}
