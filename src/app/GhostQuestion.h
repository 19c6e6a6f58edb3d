#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

// The chat that is never saved, as the end of the program sees it.
class GhostKeeping {
public:
    virtual ~GhostKeeping() = default;
    [[nodiscard]] virtual bool holdsMessages() const = 0;
    virtual void drop() = 0;
    virtual void keep() = 0;
};

// What the person is asked before a Ghost chat goes with the program.
struct GhostQuestion {
    enum class Answer { drop, keep, cancel };

    QString title;
    QString text;
    QList<Answer> answers; // in the order of the buttons

    [[nodiscard]] QStringList buttons() const;

    // A locked application can't keep anything.
    [[nodiscard]] static GhostQuestion ask(bool isLocked);
};

} // namespace morvane
