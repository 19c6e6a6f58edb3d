#pragma once

#include <QObject>
#include <QString>

#include <vector>

namespace morvane {

enum class TrayState { idle, replying, asking, locked };
enum class TrayCommand { show, newChat, newGhostChat, lookAtScreen, lock, unlock, quit };

// What a panel shows of the program: whoever stands before the screen may read it, so no word of a chat.
struct TrayFace {
    struct Entry {
        TrayCommand command;
        QString label;
        bool beginsGroup = false;

        friend bool operator==(const Entry &, const Entry &) = default;
    };

    TrayState state = TrayState::idle;
    QString words = {}; // of the state; empty while there is nothing to say
    std::vector<Entry> menu = {};

    friend bool operator==(const TrayFace &, const TrayFace &) = default;
};

// The program's place in the desktop's panel. Whether a panel draws it may change at any time. GUI thread.
class TrayIcon : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // In the place of the former face.
    virtual void show(const TrayFace &face) = 0;
    virtual void hide() = 0;
    [[nodiscard]] virtual bool isDrawn() const = 0;

Q_SIGNALS:
    void chosen(morvane::TrayCommand command);
    void isDrawnChanged();
};

} // namespace morvane
