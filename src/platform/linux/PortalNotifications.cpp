#include "platform/linux/PortalNotifications.h"

#include "platform/linux/DesktopKind.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/PortalCall.h"
#include "platform/linux/ProcessPrivacy.h"
#include "utils/text/Identifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QDBusMessage callOf(const QString &method, const QVariantList &arguments)
{
    auto call = QDBusMessage::createMethodCall(PortalCall::service, PortalCall::object,
                                               u"org.freedesktop.portal.Notification"_s, method);
    call.setArguments(arguments);
    return call;
}

} // namespace

PortalNotifications::PortalNotifications(QDBusConnection bus, QObject *parent)
    : NotificationPosting(parent)
    , m_bus(std::move(bus))
{}

void PortalNotifications::post(const DesktopNotice &notice)
{
    QVariantMap shown{{u"title"_s, notice.title},
                      {u"priority"_s, notice.isWaitedFor ? u"urgent"_s : u"normal"_s}};
    if (!notice.body.isEmpty())
        shown.insert(u"body"_s, notice.body);
    if (notice.isPassing)
        shown.insert(u"display-hint"_s, QStringList{u"transient"_s});
    if (!notice.chat.isNull()) {
        shown.insert(u"default-action"_s, u"app.open-chat"_s);
        shown.insert(u"default-action-target"_s,
                     QVariant::fromValue(QDBusVariant(Identifier::text(notice.chat))));
    }
    auto visible = std::make_shared<ProcessPrivacy::Pause>();
    constexpr int patienceMilliseconds = 5000; // the process can be looked at meanwhile
    auto *watcher = new QDBusPendingCallWatcher(
        m_bus.asyncCall(callOf(u"AddNotification"_s, {notice.key, shown}), patienceMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, visible]() mutable {
        watcher->deleteLater();
        visible.reset();
    });
}

void PortalNotifications::withdraw(const QString &key)
{
    auto call = callOf(u"RemoveNotification"_s, {key});
    call.setAutoStartService(false);
    m_bus.asyncCall(call);
}

std::unique_ptr<NotificationPosting> notificationsOfTheDesktop(const std::optional<QDBusConnection> &session,
                                                               const QString &runtimeFolder)
{
    if (session && DesktopKind::isSandboxed())
        return std::make_unique<PortalNotifications>(*session);
    return std::make_unique<DesktopNotifications>(session, runtimeFolder + u"/morvane.notices"_s);
}

} // namespace morvane
