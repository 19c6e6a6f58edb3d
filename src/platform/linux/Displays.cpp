#include "platform/linux/Displays.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QScreen>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString properties = u"org.freedesktop.DBus.Properties"_s;
const QString compositor = u"org.gnome.Mutter.DisplayConfig"_s;
const QString compositorPath = u"/org/gnome/Mutter/DisplayConfig"_s;
const QString power = u"org.freedesktop.UPower"_s;
const QString powerPath = u"/org/freedesktop/UPower"_s;

bool hasOneScreen()
{
    return !qGuiApp || QGuiApplication::screens().size() <= 1;
}

} // namespace

Displays::Displays(std::optional<QDBusConnection> session, std::optional<QDBusConnection> system,
                   QObject *parent)
    : QObject(parent)
{
    if (session)
        watch(*session, compositor, compositorPath, compositor);
    if (system)
        watch(*system, power, powerPath, power);
}

void Displays::watch(QDBusConnection bus, const QString &service, const QString &path,
                     const QString &interface)
{
    bus.connect(service, path, properties, u"PropertiesChanged"_s, this,
                SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    auto all = QDBusMessage::createMethodCall(service, path, properties, u"GetAll"_s);
    all.setArguments({interface});
    all.setAutoStartService(false);
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(all), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, interface] {
        watcher->deleteLater();
        const QDBusPendingReply<QVariantMap> reply = *watcher;
        if (reply.isValid())
            propertiesChanged(interface, reply.value(), {});
    });
}

void Displays::propertiesChanged(const QString &interface, const QVariantMap &values, const QStringList &)
{
    if (interface == compositor && values.contains(u"PowerSaveMode"_s))
        m_isSavingPower = values.value(u"PowerSaveMode"_s).toInt() > 0; // standby, suspended or off
    else if (interface == power && values.contains(u"LidIsClosed"_s))
        m_isLidClosed = values.value(u"LidIsClosed"_s).toBool();
    else
        return;
    Q_EMIT changed();
}

bool Displays::areAsleep() const
{
    return m_isSavingPower || (m_isLidClosed && hasOneScreen());
}

} // namespace morvane
