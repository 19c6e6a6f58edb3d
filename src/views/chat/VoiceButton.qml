import QtQuick
import Morvane
import Morvane.ViewModels

// Held to talk, or clicked to start and clicked again to stop; so with Space. It takes no focus from the message
// when it is clicked, since the words go there.
IconButton {
    id: root

    required property VoiceEntry voice
    readonly property bool listens: voice.phase === VoiceEntry.Starting || voice.phase === VoiceEntry.Listening
    property bool pointed: false // by a pointer, which tells of press and release

    objectName: "voice"
    visible: voice.isOffered
    focusPolicy: Qt.TabFocus
    glyph: "microphone"
    quiet: listens
    ink: listens ? Theme.accent : Theme.secondary
    text: listens ? qsTr("Stop and use the words") : qsTr("Talk: hold, or click to start and stop")
    onPressed: {
        root.pointed = true;
        root.voice.press();
    }
    onReleased: root.voice.release()
    onCanceled: {
        root.pointed = false;
        root.voice.release();
    }
    onClicked: {
        if (!root.pointed)
            root.voice.toggle();
        root.pointed = false;
    }
    Keys.onSpacePressed: event => {
        if (!event.isAutoRepeat)
            root.voice.press();
    }
    Keys.onReleased: event => {
        event.accepted = event.key === Qt.Key_Space;
        if (event.accepted && !event.isAutoRepeat)
            root.voice.release();
    }
    onActiveFocusChanged: if (!activeFocus) root.voice.release()

    Rectangle {
        z: -1
        anchors.fill: parent
        radius: Theme.controlRadius
        visible: root.listens
        color: Theme.currentWash
    }
}
