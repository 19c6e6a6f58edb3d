#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

// What the person is asked before a Ghost chat is left.
struct GhostQuestion {
    enum class Answer { drop, keep, cancel };

    QString title;
    QString text;
    QList<Answer> answers; // in the order of the buttons
    QStringList buttons;

    // Cancel for anything that is no button, as when the question was closed.
    [[nodiscard]] Answer answer(qsizetype button) const { return answers.value(button, Answer::cancel); }

    // Before it goes. A locked application can't keep anything.
    [[nodiscard]] static GhostQuestion leaving(bool isLocked);
    // Before it becomes a chat like the others.
    [[nodiscard]] static GhostQuestion saving();
};

} // namespace morvane
