#pragma once

#include "platform/linux/BusNameOwner.h"
#include "view_models/chat/NotificationPosting.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QSet>

#include <map>
#include <optional>

class QDBusPendingCallWatcher;

namespace morvane {

// Notifications of the desktop (org.freedesktop.Notifications, version 1.2), in the shape that its server
// says it can show. Only the program that shows one is heard about it, whoever else speaks on the bus. GUI
// thread.
class DesktopNotifications final : public NotificationPosting, protected QDBusContext {
    Q_OBJECT
public:
    // `bus` is the session's. `numbers` is a file that goes with the session. It holds what the server calls
    // what is shown, so that the run after a killed one takes that back; empty for none.
    explicit DesktopNotifications(std::optional<QDBusConnection> bus, const QString &numbers = {},
                                  QObject *parent = nullptr);
    ~DesktopNotifications() override; // nobody would hear a click any more: what is shown is taken back

    void post(const DesktopNotice &notice) override;
    void withdraw(const QString &key) override;

private Q_SLOTS:
    void actionInvoked(uint id, const QString &action);
    void activationToken(uint id, const QString &token);
    void notificationClosed(uint id, uint reason);

private:
    struct Shown {
        DesktopNotice notice;
        uint id = 0;           // 0 until the server has told it
        QString server;        // its unique name on the bus
        bool isAsking = false; // the server hasn't answered yet
        bool isWanted = true;
        bool isNew = false; // other than what the server was asked to show
    };

    void askCapabilities();
    void sendAll();
    void send(Shown &shown);
    void answered(const QString &key, QDBusPendingCallWatcher &watcher);
    [[nodiscard]] QVariantList arguments(const Shown &shown) const;
    void close(const Shown &shown);
    void closeLeftOnes();
    void noteNumbers() const;
    // Of those that the sender of the present signal shows.
    [[nodiscard]] std::optional<QString> keyOf(uint id) const;

    std::optional<QDBusConnection> m_bus;
    std::optional<BusNameOwner> m_owner; // there with the bus
    const QString m_numbers;
    std::optional<QSet<QString>> m_capabilities; // none until the server has told them
    QString m_server;                            // whose they are
    bool m_isAskingCapabilities = false;
    std::map<QString, Shown> m_shown; // by their keys
};

} // namespace morvane
