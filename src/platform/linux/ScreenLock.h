#pragma once

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <optional>

namespace morvane {

class LoginSession;
class ScreenSavers;

// Whether the desktop's own lock stands before the screen, whoever's it is: what a notification says would be
// read there. Where nobody tells, it never does. Costs nothing while nothing changes. GUI thread.
class ScreenLock : public QObject {
    Q_OBJECT
public:
    ScreenLock(const std::optional<QDBusConnection> &session, const std::optional<QDBusConnection> &system,
               QObject *parent = nullptr);
    ~ScreenLock() override;

    [[nodiscard]] bool isLocked() const { return m_isLocked; }

Q_SIGNALS:
    void changed(bool locked);

private:
    void look();

    std::unique_ptr<LoginSession> m_login;  // null without the system's bus
    std::unique_ptr<ScreenSavers> m_savers; // null without the session's bus
    bool m_isLocked = false;
};

} // namespace morvane
