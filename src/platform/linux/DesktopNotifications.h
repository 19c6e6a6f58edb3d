#pragma once

#include "view_models/chat/ReplyPorts.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>
#include <optional>

namespace morvane {

// Notifications of the desktop (org.freedesktop.Notifications, version 1.2). Without a bus or a notification
// server nothing appears. Never blocks. GUI thread.
class DesktopNotifications : public QObject, public morvane::ReplyNotifying {
    Q_OBJECT
public:
    // The session's bus; none where the session names none, since asking for it would start one.
    [[nodiscard]] static std::optional<QDBusConnection> sessionBus();

    explicit DesktopNotifications(std::optional<QDBusConnection> bus = sessionBus(),
                                  QObject *parent = nullptr);

    void replyReady(const QUuid &conversation, const QString &title) override;
    void ghostReplyReady() override;
    void ghostReplyFailed(const QString &message, const QString &suggestion) override;
    void withdrawGhostReplies() override;
    void replyFailed(const QString &message, const QString &suggestion) override;
    void approvalWaits(const QString &verb) override;
    void withdrawApproval() override;
    void withdrawAll() override;

Q_SIGNALS:
    // A notification was clicked. Null when it is about no saved chat.
    void chosen(const QUuid &conversation);

private Q_SLOTS:
    void actionInvoked(uint id, const QString &action);
    void notificationClosed(uint id, uint reason);

private:
    using Shown = std::function<void(uint id)>;

    enum class Lasting {
        usual,
        passing, // the desktop keeps no list of it
    };

    // `body` is plain text. `shown` is told the number that the desktop gave it.
    void post(const QString &summary, const QString &body, const QUuid &conversation, Shown shown = {},
              Lasting lasting = Lasting::usual);
    void postOfGhost(const QString &summary, const QString &body);
    void close(uint id);
    [[nodiscard]] static QDBusMessage call(const QString &method, const QVariantList &arguments);

    std::optional<QDBusConnection> m_bus;
    QHash<uint, QUuid> m_conversations; // of the notifications that are shown
    int m_waiting = 0;                  // grows with each approval, and when it needs no answer any more
    int m_allWithdrawn = 0;             // grows with each time that all were
    int m_ghostsLeft = 0;               // grows with each Ghost chat that is left
    QSet<uint> m_ofGhosts;              // numbers of the notifications of the present one
    uint m_approval = 0;                // the number of its notification; 0 until the desktop has told it
};

} // namespace morvane
