pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// A chat with nothing in it yet: the ghost, a heading, and a way to begin.
Item {
    id: root

    required property CompanionViewModel companion
    required property bool configured
    property real column: Theme.columnWidth
    property string explanation // what holds for this chat; empty for nothing

    signal suggestionChosen(string text)
    signal settingsChosen()

    Column {
        anchors.centerIn: parent
        width: Math.min(root.column, 560 * Theme.zoom)
        spacing: Theme.gap16

        Ghost {
            objectName: "largeGhost"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: root.height > 320 * Theme.zoom
            size: 96 * Theme.zoom
            companion: root.companion
        }
        PlainText {
            width: parent.width
            text: root.configured ? qsTr("What is on your mind?") : qsTr("Choose where replies come from")
            font.pixelSize: Theme.headingSize
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        SmallText {
            width: parent.width
            visible: text.length > 0
            text: root.explanation
            horizontalAlignment: Text.AlignHCenter
        }
        SmallText {
            width: parent.width
            visible: !root.configured
            text: qsTr("No model is set up yet, so there is nobody to answer. Settings sets one up on this computer with one press, or takes one from a computer nearby or a service that you use.")
            horizontalAlignment: Text.AlignHCenter
        }
        PushButton {
            objectName: "emptyStateSettings"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: !root.configured
            text: qsTr("Open Settings")
            rank: PushButton.Primary
            onClicked: root.settingsChosen()
        }
        Grid {
            id: suggestions

            // As high as the one that has the most to say.
            readonly property real cardHeight: {
                let tallest = 0;
                for (let i = 0; i < children.length; ++i)
                    tallest = Math.max(tallest, children[i].implicitHeight);
                return tallest;
            }

            width: parent.width
            visible: root.configured && root.height > 260 * Theme.zoom
            topPadding: Theme.gap8
            columns: width > 440 * Theme.zoom ? 2 : 1
            spacing: Theme.gap8

            Repeater {
                model: root.configured ? [
                    qsTr("Explain something in plain words: "),
                    qsTr("Help me write a message to "),
                    qsTr("Make a plan for "),
                    qsTr("What should I ask before I decide on ")
                ] : []

                SuggestionCard {
                    required property string modelData

                    objectName: "suggestion"
                    width: suggestions.columns === 2 ? (suggestions.width - Theme.gap8) / 2 : suggestions.width
                    height: suggestions.cardHeight
                    text: modelData
                    onClicked: root.suggestionChosen(text)
                }
            }
        }
    }
}
