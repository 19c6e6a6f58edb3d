#include "platform/linux/BusNameOwner.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace morvane {

using namespace Qt::StringLiterals;

BusNameOwner::BusNameOwner(const QDBusConnection &bus, const QString &name, QObject *parent)
    : QObject(parent)
    , m_watcher(name, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &former, const QString &now) {
                m_hasChanged = true;
                m_current = now;
                Q_EMIT changed(former, now);
            });
    const QString service = u"org.freedesktop.DBus"_s;
    auto call =
        QDBusMessage::createMethodCall(service, u"/org/freedesktop/DBus"_s, service, u"GetNameOwner"_s);
    call.setArguments({name});
    auto *asked = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
        asked->deleteLater();
        const QDBusPendingReply<QString> owner = *asked;
        if (owner.isValid() && !m_hasChanged)
            m_current = owner.value();
    });
}

} // namespace morvane
