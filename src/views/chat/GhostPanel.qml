import QtQuick
import Morvane
import Morvane.ViewModels

// Asks what becomes of a Ghost chat before it is left.
QuestionPanel {
    id: root

    required property GhostDesk ghosts
    readonly property string asked: ghosts.questionId
    property string shown // the question that an answer is given to

    onAskedChanged: root.take()

    function take() {
        if (root.asked.length === 0)
            return;
        root.shown = root.asked;
        root.answer = -1;
    }

    visible: asked.length > 0
    title: ghosts.questionTitle
    words: ghosts.questionText
    buttons: ghosts.questionButtons
    dangerous: ghosts.questionDrops ? 0 : -1
    onAnswered: button => root.ghosts.answer(root.shown, button)
    Component.onCompleted: root.take()
}
