#pragma once

#include "view_models/chat/NotificationPosting.h"

#include <QDBusConnection>

#include <memory>
#include <optional>

namespace morvane {

// Notifications by the desktop's portal (org.freedesktop.portal.Notification, version 1 and later), which is
// how a sandboxed program has them. A click comes as a call of the application's own interface on the bus,
// which also starts a program that has ended. GUI thread.
class PortalNotifications final : public NotificationPosting {
    Q_OBJECT
public:
    explicit PortalNotifications(QDBusConnection bus, QObject *parent = nullptr);

    void post(const DesktopNotice &notice) override;
    void withdraw(const QString &key) override;

private:
    QDBusConnection m_bus;
};

// The way for this desktop; without a bus nothing appears. `runtimeFolder` goes with the session.
[[nodiscard]] std::unique_ptr<NotificationPosting>
notificationsOfTheDesktop(const std::optional<QDBusConnection> &session, const QString &runtimeFolder);

} // namespace morvane
