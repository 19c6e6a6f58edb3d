import Morvane
import Morvane.ViewModels

// What has to be answered before the application goes on.
QuestionPanel {
    required property ShellViewModel shell

    visible: shell.questionTitle.length > 0
    title: shell.questionTitle
    words: shell.questionText
    buttons: shell.questionButtons
    onAnswered: button => shell.answerQuestion(button)
}
