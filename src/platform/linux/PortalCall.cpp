#include "platform/linux/PortalCall.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString requests = u"org.freedesktop.portal.Request"_s;
constexpr uint succeeded = 0;
// The process can be looked at meanwhile, so not for as long as a call may take.
constexpr int patienceMilliseconds = 5000;

} // namespace

PortalCall::PortalCall(QDBusConnection bus, const QString &interface, const QString &method,
                       QVariantList arguments, QVariantMap options, Answered answered, QObject *parent)
    : QObject(parent)
    , m_visible(std::make_unique<ProcessPrivacy::Pause>())
    , m_answered(std::move(answered))
{
    const QString token = newToken();
    // Before the call, since the answer may come first; by no sender's name, which would have to be asked
    // for.
    bus.connect({}, pathOf(bus, u"request", token), requests, u"Response"_s, this,
                SLOT(responded(uint, QVariantMap)));
    auto call = QDBusMessage::createMethodCall(service, object, interface, method);
    options.insert(u"handle_token"_s, token);
    arguments.append(options);
    call.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, patienceMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_visible.reset();
        if (watcher->isError())
            return finish(saysThatNoneIsThere(watcher->error()) ? End::noPortal : End::declined, {});
        m_portal = watcher->reply().service();
    });
}

QString PortalCall::newToken()
{
    return u"morvane"_s + QUuid::createUuid().toString(QUuid::Id128);
}

QString PortalCall::pathOf(const QDBusConnection &bus, QStringView kind, const QString &token)
{
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    return u"%1/%2/%3/%4"_s.arg(QString(object), kind, sender, token);
}

bool PortalCall::saysThatNoneIsThere(const QDBusError &error)
{
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownObject:
    case QDBusError::NoServer:
    case QDBusError::Disconnected:
        return true;
    default:
        return error.name().startsWith("org.freedesktop.DBus.Error.Spawn."_L1) ||
               error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
    }
}

// Another program could send such a signal as well. The portal replies before it answers.
void PortalCall::responded(uint response, const QVariantMap &results)
{
    if (!m_portal.isEmpty() && message().service() == m_portal)
        finish(response == succeeded ? End::done : End::declined, results);
}

void PortalCall::finish(End end, const QVariantMap &results)
{
    deleteLater();
    if (const auto answered = std::exchange(m_answered, {}))
        answered(end, results, m_portal);
}

} // namespace morvane
