#pragma once

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <optional>

class QSocketNotifier;
struct xcb_connection_t;

namespace morvane {

// How long nothing was typed or moved: by the X server's screen saver extension, where there is one, which
// also tells when it blanks the screen or puts the displays to sleep; and by the compositor of a desktop that
// keeps it. GUI thread.
class IdleInput : public QObject {
    Q_OBJECT
public:
    explicit IdleInput(std::optional<QDBusConnection> session, QObject *parent = nullptr);
    ~IdleInput() override;

    // changed() follows.
    void ask();

    [[nodiscard]] double seconds() const { return m_seconds; }
    [[nodiscard]] bool isBlanked() const { return m_isBlanked; }           // by the X server's own saver
    [[nodiscard]] bool areDisplaysOff() const { return m_areDisplaysOff; } // as of the last question

Q_SIGNALS:
    void changed();

private:
    struct XConnection;

    void openX();
    void hearX();
    void askX();
    void askCompositor();

    std::optional<QDBusConnection> m_session;
    std::unique_ptr<XConnection> m_x; // null where no X server answers
    double m_seconds = 0;
    bool m_isBlanked = false;
    bool m_areDisplaysOff = false;
};

} // namespace morvane
