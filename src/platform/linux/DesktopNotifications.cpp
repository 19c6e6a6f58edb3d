#include "platform/linux/DesktopNotifications.h"

#include "utils/text/Product.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;
const QString clicked = u"default"_s; // the action of a click on the notification itself
constexpr int asTheDesktopLikes = -1; // milliseconds

} // namespace

std::optional<QDBusConnection> DesktopNotifications::sessionBus()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return std::nullopt;
    return QDBusConnection::sessionBus();
}

DesktopNotifications::DesktopNotifications(std::optional<QDBusConnection> bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    if (m_bus && !m_bus->isConnected())
        m_bus.reset();
    if (!m_bus)
        return;
    m_bus->connect(service, path, service, u"ActionInvoked"_s, this, SLOT(actionInvoked(uint, QString)));
    m_bus->connect(service, path, service, u"NotificationClosed"_s, this,
                   SLOT(notificationClosed(uint, uint)));
}

void DesktopNotifications::replyReady(const QUuid &conversation, const QString &title)
{
    post(u"Reply ready"_s, title, conversation);
}

void DesktopNotifications::ghostReplyReady()
{
    postOfGhost(u"Reply ready"_s, {});
}

void DesktopNotifications::ghostReplyFailed(const QString &message, const QString &suggestion)
{
    postOfGhost(message, suggestion);
}

void DesktopNotifications::postOfGhost(const QString &summary, const QString &body)
{
    const auto shown = [this, chat = m_ghostsLeft](uint id) {
        if (chat == m_ghostsLeft)
            m_ofGhosts.insert(id);
        else
            close(id); // it was left before the desktop had told the number
    };
    post(summary, body, {}, shown, Lasting::passing);
}

void DesktopNotifications::withdrawGhostReplies()
{
    ++m_ghostsLeft;
    for (const uint id : std::exchange(m_ofGhosts, {}))
        close(id);
}

void DesktopNotifications::replyFailed(const QString &message, const QString &suggestion)
{
    post(message, suggestion, {});
}

void DesktopNotifications::approvalWaits(const QString &verb)
{
    withdrawApproval();
    post(u"%1 waits for your answer"_s.arg(Product::name), verb, {}, [this, waiting = m_waiting](uint id) {
        if (waiting == m_waiting)
            m_approval = id;
        else
            close(id); // the person was faster than the desktop
    });
}

void DesktopNotifications::withdrawApproval()
{
    ++m_waiting;
    if (const uint id = std::exchange(m_approval, 0); id != 0)
        close(id);
}

void DesktopNotifications::withdrawAll()
{
    ++m_allWithdrawn;
    withdrawGhostReplies();
    withdrawApproval();
    for (const uint id : m_conversations.keys())
        close(id);
}

void DesktopNotifications::post(const QString &summary, const QString &body, const QUuid &conversation,
                                Shown shown, Lasting lasting)
{
    if (!m_bus)
        return;
    QVariantMap hints{{u"desktop-entry"_s, QString(Product::desktopId)}};
    if (lasting == Lasting::passing)
        hints.insert(u"transient"_s, true);
    const QStringList actions{clicked, u"Open"_s};
    const auto asked = call(u"Notify"_s, {QString(Product::name), 0U, QString(), summary,
                                          body.toHtmlEscaped(), actions, hints, asTheDesktopLikes});
    auto *watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(asked), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, conversation, shown = std::move(shown), former = m_allWithdrawn] {
                watcher->deleteLater();
                const QDBusPendingReply<uint> id = *watcher;
                if (!id.isValid())
                    return;
                if (former != m_allWithdrawn)
                    return close(id.value()); // it was withdrawn before the desktop had told the number
                m_conversations.insert(id.value(), conversation);
                if (shown)
                    shown(id.value());
            });
}

void DesktopNotifications::close(uint id)
{
    if (m_bus)
        m_bus->asyncCall(call(u"CloseNotification"_s, {id}));
}

QDBusMessage DesktopNotifications::call(const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(service, path, service, method);
    message.setArguments(arguments);
    return message;
}

void DesktopNotifications::actionInvoked(uint id, const QString &action)
{
    const auto shown = m_conversations.constFind(id); // those of other programs are told of as well
    if (shown != m_conversations.constEnd() && action == clicked)
        Q_EMIT chosen(*shown);
}

void DesktopNotifications::notificationClosed(uint id, uint)
{
    m_conversations.remove(id);
    m_ofGhosts.remove(id);
}

} // namespace morvane
