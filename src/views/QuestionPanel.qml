pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Morvane

// A question with a button for each answer; the keyboard starts on the last, which is harmless. Closing it is an
// answer of its own, -1.
Panel {
    id: root

    property string words
    property var buttons: []
    property int dangerous: -1 // the button of what is gone for good
    property int answer: -1

    signal answered(int button)

    function give(button: int) {
        root.answer = button;
        root.close();
    }

    onAboutToShow: answer = -1
    onClosed: root.answered(answer)

    contentItem: ColumnLayout {
        spacing: Theme.gap24

        SmallText {
            Layout.fillWidth: true
            text: root.words
        }
        Flow {
            Layout.fillWidth: true
            spacing: Theme.gap8
            layoutDirection: Qt.RightToLeft

            Repeater {
                model: root.buttons

                PushButton {
                    required property int index
                    required property string modelData

                    text: modelData
                    rank: index === root.dangerous ? PushButton.Danger : PushButton.Plain
                    focus: index === root.buttons.length - 1
                    onClicked: root.give(index)
                }
            }
        }
    }
}
