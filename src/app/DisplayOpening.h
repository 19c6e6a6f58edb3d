#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>
#include <string>
#include <vector>

namespace morvane {

namespace WaylandSession {
class Quiet;
}

// Stands around the making of the application object, which takes a display for granted: Qt aborts where none
// is, and waits for ever for a server that takes the connection and says nothing. While one lives, either
// ends the program with one line on stderr. One at a time; on the main thread.
class DisplayOpening {
public:
    static constexpr int noDisplay = 69;     // the exit code: a service is unavailable (sysexits.h)
    static constexpr unsigned patience = 20; // seconds; a server may be at the end of a slow line

    DisplayOpening();
    ~DisplayOpening();
    DisplayOpening(const DisplayOpening &) = delete;
    DisplayOpening &operator=(const DisplayOpening &) = delete;

    // Why there is none, from the environment and what Qt said before it gave up. One line, without its end.
    [[nodiscard]] static QString reason(const QString &lastWords);

private:
    struct Held {
        QtMsgType type;
        std::string category;
        QString words;
    };

    static void hear(QtMsgType type, const QMessageLogContext &context, const QString &words);

    static DisplayOpening *s_current;
    std::unique_ptr<WaylandSession::Quiet> m_quiet;
    QtMessageHandler m_former;
    std::string m_silence;    // the line for a server that doesn't answer; a signal handler makes none
    std::vector<Held> m_held; // complaints of ways that failed before one worked
};

} // namespace morvane
