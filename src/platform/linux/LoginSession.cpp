#include "platform/linux/LoginSession.h"

#include "utils/text/Product.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <ctime>
#include <functional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.login1"_s;
const QString managerPath = u"/org/freedesktop/login1"_s;
const QString manager = u"org.freedesktop.login1.Manager"_s;
const QString session = u"org.freedesktop.login1.Session"_s;
const QString properties = u"org.freedesktop.DBus.Properties"_s;

QDBusMessage call(const QString &path, const QString &interface, const QString &method,
                  const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

template <typename T>
void ask(QDBusConnection &bus, const QDBusMessage &message, QObject *asker,
         std::function<void(const T &)> answered)
{
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), asker);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, asker, [watcher, answered] {
        watcher->deleteLater();
        const QDBusPendingReply<T> reply = *watcher;
        if (reply.isValid())
            answered(reply.value());
    });
}

quint64 nowMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<quint64>(now.tv_sec) * 1'000'000 + static_cast<quint64>(now.tv_nsec) / 1000;
}

} // namespace

LoginSession::LoginSession(QDBusConnection bus, Sleep sleep, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    if (sleep == Sleep::putOff) {
        m_bus.connect(service, managerPath, manager, u"PrepareForSleep"_s, this,
                      SLOT(preparingForSleep(bool)));
        holdSleep();
    }
    findSession();
}

// A program that the desktop's own service manager started belongs to no session; the one that its person
// looks at is theirs.
void LoginSession::findSession()
{
    if (const QString id = qEnvironmentVariable("XDG_SESSION_ID"); !id.isEmpty()) {
        ask<QDBusObjectPath>(m_bus, call(managerPath, manager, u"GetSession"_s, {id}), this,
                             [this](const QDBusObjectPath &path) { watch(path.path()); });
        return;
    }
    const auto display = call(managerPath + u"/user/self"_s, properties, u"Get"_s,
                              {u"org.freedesktop.login1.User"_s, u"Display"_s});
    ask<QDBusVariant>(m_bus, display, this, [this](const QDBusVariant &value) {
        const auto pair = value.variant().value<QDBusArgument>();
        if (pair.currentType() != QDBusArgument::StructureType)
            return;
        QString id;
        QDBusObjectPath path;
        pair.beginStructure();
        pair >> id >> path;
        pair.endStructure();
        watch(path.path());
    });
}

void LoginSession::watch(const QString &path)
{
    if (path.size() < 2)
        return; // "/": nobody looks at any
    m_path = path;
    m_bus.connect(service, path, session, u"Lock"_s, this, SLOT(locked()));
    m_bus.connect(service, path, session, u"Unlock"_s, this, SLOT(unlocked()));
    m_bus.connect(service, path, properties, u"PropertiesChanged"_s, this,
                  SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    read();
}

void LoginSession::read()
{
    ask<QVariantMap>(m_bus, call(m_path, properties, u"GetAll"_s, {session}), this,
                     [this](const QVariantMap &values) { take(values); });
}

void LoginSession::propertiesChanged(const QString &interface, const QVariantMap &, const QStringList &)
{
    if (interface == session)
        read(); // since when it is idle comes with no signal of its own
}

void LoginSession::take(const QVariantMap &values)
{
    m_isLocked = values.value(u"LockedHint"_s, m_isLocked).toBool();
    m_isInactive = !values.value(u"Active"_s, true).toBool();
    m_idleSince.reset();
    const bool isIdle = values.value(u"IdleHint"_s).toBool();
    m_tellsIdleTime = m_tellsIdleTime || isIdle;
    if (isIdle)
        m_idleSince = values.value(u"IdleSinceHintMonotonic"_s).toULongLong();
    Q_EMIT changed();
}

void LoginSession::setLocked(bool locked)
{
    m_isLocked = locked;
    Q_EMIT changed();
}

double LoginSession::idleSeconds() const
{
    const quint64 now = nowMicroseconds();
    return m_idleSince && *m_idleSince < now ? static_cast<double>(now - *m_idleSince) / 1e6 : 0;
}

// Letting go of the hold tells logind to go on.
void LoginSession::preparingForSleep(bool begins)
{
    m_isAsleep = begins;
    Q_EMIT changed();
    if (begins)
        m_hold.reset();
    else
        holdSleep();
}

void LoginSession::holdSleep()
{
    const QVariantList words{u"sleep"_s, QString(Product::name),
                             u"Locks your chats before the computer sleeps"_s, u"delay"_s};
    ask<QDBusUnixFileDescriptor>(m_bus, call(managerPath, manager, u"Inhibit"_s, words), this,
                                 [this](const QDBusUnixFileDescriptor &hold) {
                                     if (!m_isAsleep)
                                         m_hold = hold;
                                 });
}

} // namespace morvane
