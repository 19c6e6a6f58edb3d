pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// How to talk to the composer, how replies are read aloud, and which microphone listens.
SettingsPage {
    id: root

    required property SpeakingViewModel speaking
    required property MicrophoneViewModel microphone
    required property RecognitionViewModel recognition
    required property SettingsStore settings
    required property GlobalShortcutViewModel talkKey
    property bool shown: false
    property bool sought: false // words of it may be looked for

    function look() {
        root.recognition.refresh();
        root.speaking.refresh();
    }

    title: qsTr("Voice")
    onShownChanged: {
        root.microphone.setWatched(root.shown);
        if (root.shown)
            root.look();
        else
            root.speaking.stop();
    }
    onSoughtChanged: if (sought) root.look()

    TalkingCard {
        settings: root.settings
        talkKey: root.talkKey
    }
    MicrophoneCard { microphone: root.microphone }
    RecognitionCard { recognition: root.recognition }
    SettingsCard {
        heading: qsTr("Reading aloud")

        SwitchRow {
            objectName: "voice.output"
            title: qsTr("Read replies aloud")
            explanation: qsTr("When a reply has ended. Each reply also has a button that reads it.")
            checked: root.settings.voiceOutputEnabled
            onToggled: on => root.settings.voiceOutputEnabled = on
        }
        SwitchRow {
            objectName: "voice.code"
            title: qsTr("Read code as well")
            explanation: qsTr("Otherwise a phrase stands in for it.")
            checked: root.settings.speakCodeBlocks
            onToggled: on => root.settings.speakCodeBlocks = on
        }
        SettingsRow {
            title: qsTr("Speed")

            ValueSlider {
                objectName: "voice.rate"
                from: 0
                to: 1
                stepSize: 0.05
                value: root.settings.speakingRate
                Accessible.name: qsTr("Speed of reading")
                onMoved: root.settings.speakingRate = value
            }
        }
        SettingsRow {
            title: qsTr("Try it")
            explanation: root.speaking.message.length > 0 ? root.speaking.message
                : qsTr("The voices are made on this computer and speak English.")
            explanationInk: root.speaking.message.length > 0 ? Theme.danger : Theme.secondary

            PushButton {
                objectName: "voice.listen"
                text: root.speaking.isListening ? qsTr("Stop") : qsTr("Listen")
                onClicked: root.speaking.listen()
            }
        }
    }
    SettingsCard {
        heading: qsTr("Voices")
        visible: root.speaking.voices.length > 1 || root.speaking.hasMore

        Repeater {
            model: root.speaking.voices

            ChoiceRow {
                required property string modelData
                required property int index

                objectName: "voice.choice." + index
                title: modelData
                chosen: index === root.speaking.voice
                onPicked: root.speaking.voice = index
            }
        }
        SettingsRow {
            visible: root.speaking.hasMore
            title: qsTr("Other languages")
            explanation: qsTr("Asks speech-dispatcher for the voices that are installed, and starts it for that.")

            PushButton {
                objectName: "voice.more"
                text: qsTr("Show")
                onClicked: root.speaking.showMore()
            }
        }
    }
}
