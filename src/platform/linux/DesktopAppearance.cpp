#include "platform/linux/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;
const QString group = u"org.freedesktop.appearance"_s;
const QString key = u"color-scheme"_s;
constexpr uint prefersDark = 1;
// The process can be looked at meanwhile, so not for as long as a call may take.
constexpr int patienceMilliseconds = 3000;

} // namespace

DesktopAppearance::DesktopAppearance(QObject *parent)
    : QObject(parent)
{
    // Asking for the session bus where none is named would start one.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return;
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(service, path, interface, u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto call = QDBusMessage::createMethodCall(service, path, interface, u"Read"_s);
    call.setArguments({group, key});
    m_visible = std::make_unique<ProcessPrivacy::Pause>();
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, patienceMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        m_visible.reset();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            take(reply.value().variant());
    });
}

void DesktopAppearance::settingChanged(const QString &changedGroup, const QString &changedKey,
                                       const QDBusVariant &value)
{
    if (changedGroup == group && changedKey == key)
        take(value.variant());
}

void DesktopAppearance::take(const QVariant &colorScheme)
{
    // Some portals answer Read with a variant inside the variant.
    const QVariant plain =
        colorScheme.canConvert<QDBusVariant>() ? colorScheme.value<QDBusVariant>().variant() : colorScheme;
    const bool isDark = plain.toUInt() == prefersDark;
    if (isDark == m_isDark)
        return;
    m_isDark = isDark;
    Q_EMIT darkChanged(isDark);
}

} // namespace morvane
