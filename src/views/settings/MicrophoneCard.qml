pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// Which microphone is used, with a meter and a playback to try it by.
SettingsCard {
    id: root

    required property MicrophoneViewModel microphone

    heading: qsTr("Microphone")

    Repeater {
        model: root.microphone.devices

        ChoiceRow {
            required property string modelData
            required property int index

            objectName: "microphone.choice." + index
            title: modelData
            chosen: index === root.microphone.device
            onPicked: root.microphone.device = index
        }
    }
    SettingsRow {
        title: qsTr("Try it")
        explanation: root.microphone.message.length > 0 ? root.microphone.message
            : qsTr("Speak for a few seconds, and the meter moves. Nothing of it is kept, and nothing leaves this computer.")
        explanationInk: root.microphone.message.length > 0 ? Theme.danger : Theme.secondary

        LevelMeter {
            id: meter

            visible: root.microphone.isTrying
            onAsked: meter.level = root.microphone.level()
        }
        PushButton {
            objectName: "microphone.playBack"
            visible: root.microphone.canPlayBack || root.microphone.isPlayingBack
            text: root.microphone.isPlayingBack ? qsTr("Stop Playing") : qsTr("Play Back")
            onClicked: root.microphone.playBack()
        }
        PushButton {
            objectName: "microphone.try"
            text: root.microphone.isTrying ? qsTr("Stop") : qsTr("Try")
            onClicked: root.microphone.tryIt()
        }
    }
}
