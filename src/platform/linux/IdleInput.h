#pragma once

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <optional>

class QSocketNotifier;
struct xcb_connection_t;

namespace morvane {

class WaylandIdle;

// How long nothing was typed or moved: in an X11 session by the X server's screen saver extension, which also
// tells when it blanks the screen or puts the displays to sleep; in a Wayland session by its compositor,
// where it tells. Such a session's X server sees only what is typed into windows of its own, and isn't asked:
// to it somebody who writes here is away. GUI thread.
class IdleInput : public QObject {
    Q_OBJECT
public:
    explicit IdleInput(std::optional<QDBusConnection> session, QObject *parent = nullptr);
    ~IdleInput() override;

    // changed() follows.
    void ask();

    // Whether anybody tells, as of the last answer.
    [[nodiscard]] bool isServed() const;
    [[nodiscard]] double seconds() const { return m_seconds; }
    [[nodiscard]] bool isBlanked() const { return m_isBlanked; }           // by the X server's own saver
    [[nodiscard]] bool areDisplaysOff() const { return m_areDisplaysOff; } // as of the last question

Q_SIGNALS:
    void changed();

private:
    struct XConnection;

    void openX();
    void openWayland();
    void hearX();
    void askX();
    void askCompositor();

    std::optional<QDBusConnection> m_session;
    std::unique_ptr<XConnection> m_x;       // null where no X server answers, and in a Wayland session
    std::unique_ptr<WaylandIdle> m_wayland; // null where no compositor answers
    double m_seconds = 0;
    bool m_isRefused = false; // by a compositor that has no such question
    bool m_isBlanked = false;
    bool m_areDisplaysOff = false;
};

} // namespace morvane
