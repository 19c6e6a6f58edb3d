import QtQuick
import Morvane
import Morvane.ViewModels

// What a screen reader is told while the open chat goes on.
Announcement {
    id: root

    required property ChatViewModel chat
    property string words

    function say(text: string) {
        root.words = text;
        root.announce();
    }

    objectName: "announcement"
    Accessible.role: Accessible.Notification
    Accessible.name: words

    Connections {
        target: root.chat

        function onIsRespondingChanged() { if (root.chat.isResponding) root.say(qsTr("Replying")); }
        function onReplyFinished(text: string) { root.say(text); }
        function onNeedsAttention() { root.say(root.chat.approval.verb); }
    }
    Connections {
        target: root.chat.messages

        function onStalled(words: string) { root.say(words); }
    }
    Connections {
        target: root.chat.ghosts

        function onIsOnChanged() {
            root.say(root.chat.ghosts.isOn ? qsTr("Ghost mode is on. Nothing here is kept.")
                                           : qsTr("Ghost mode is off"));
        }
    }
    Connections {
        target: root.chat.entries.attachments

        function onAttached() {
            const desk = root.chat.entries.attachments;
            root.say(qsTr("Attached: %1").arg(desk.name) + ". " + desk.notice);
        }
    }
    Connections {
        target: root.chat.entries

        function onSaid(words: string) { root.say(words); }
    }
    Connections {
        target: root.chat.entries.voice

        function onSecondsLeftChanged() {
            const left = root.chat.entries.voice.secondsLeft;
            if (left === 30)
                root.say(qsTr("Listening ends in %1 seconds").arg(left));
        }
    }
}
