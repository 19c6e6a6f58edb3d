pragma ComponentBehavior: Bound

import QtQuick
import Morvane
import Morvane.ViewModels

// What turns speech into words, and how to get something better.
SettingsCard {
    id: root

    required property RecognitionViewModel recognition

    heading: qsTr("Understanding you")

    SettingsRow {
        objectName: "recognition.engine"
        title: root.recognition.engine
        explanation: root.recognition.languages
    }
    SettingsRow {
        objectName: "recognition.model"
        title: qsTr("Speech model")
        explanation: root.recognition.advice.length > 0 ? root.recognition.advice
            : qsTr("Runs on this computer, only while you talk and a little longer.")
        explanationInk: root.recognition.isBroken ? Theme.danger : Theme.secondary

        PushButton {
            objectName: "recognition.forget"
            visible: root.recognition.hasChosen
            text: qsTr("Use none")
            onClicked: root.recognition.forget()
        }
        PushButton {
            objectName: "recognition.choose"
            text: qsTr("Choose…")
            onClicked: dialog.setSource("SpeechModelDialog.qml")
        }
    }
    Loader {
        id: dialog

        onLoaded: {
            const files = item as SpeechModelDialog;
            files.chosen.connect(file => root.recognition.choose(file));
            files.finished.connect(() => dialog.source = "");
            files.open();
        }
    }
}
