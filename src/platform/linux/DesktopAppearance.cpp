#include "platform/linux/DesktopAppearance.h"

#include "platform/linux/MachineBuses.h"
#include "platform/linux/ProcessPrivacy.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QMap>

#include <algorithm>
#include <memory>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;
const QString group = u"org.freedesktop.appearance"_s;
// The process can be looked at meanwhile, so not for as long as a call may take.
constexpr int patienceMilliseconds = 3000;

bool isOne(const QVariant &value)
{
    return value.toUInt() == 1;
}

// A structure of three doubles.
std::optional<std::array<double, 3>> colourIn(const QVariant &value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != u"(ddd)"_s)
        return std::nullopt;
    std::array<double, 3> parts{};
    argument.beginStructure();
    for (double &part : parts)
        argument >> part;
    argument.endStructure();
    const bool isColour = std::ranges::all_of(parts, [](double part) { return part >= 0 && part <= 1; });
    return isColour ? std::optional(parts) : std::nullopt;
}

// A portal with several backends tells the same group once of each, and means the first that has a value.
QVariantMap valuesIn(const QDBusArgument &groups)
{
    QVariantMap values;
    groups.beginMap();
    while (!groups.atEnd()) {
        QString name;
        QVariantMap told;
        groups.beginMapEntry();
        groups >> name >> told;
        groups.endMapEntry();
        if (name == group) {
            told.insert(values);
            values = told;
        }
    }
    groups.endMap();
    return values;
}

// The look with one key's new value. An unknown key changes nothing.
DesktopLook with(DesktopLook look, const QString &key, const QVariant &value)
{
    if (key == u"color-scheme"_s)
        look.isDark = isOne(value);
    else if (key == u"contrast"_s)
        look.hasHighContrast = isOne(value);
    else if (key == u"reduced-motion"_s)
        look.hasReducedMotion = isOne(value);
    else if (key == u"accent-color"_s)
        look.accent = colourIn(value);
    return look;
}

} // namespace

DesktopAppearance::DesktopAppearance(QObject *parent)
    : DesktopAppearance(MachineBuses::session().value_or(QDBusConnection(u"none"_s)), parent)
{}

DesktopAppearance::DesktopAppearance(QDBusConnection bus, QObject *parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    if (!m_bus.isConnected())
        return;
    m_bus.connect(service, path, interface, u"SettingChanged"_s, this, SLOT(settingChanged(QDBusMessage)));
    // One that is still starting, as after a login, may take longer than is waited for.
    m_portal.setConnection(m_bus);
    m_portal.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
    m_portal.addWatchedService(service);
    connect(&m_portal, &QDBusServiceWatcher::serviceRegistered, this, &DesktopAppearance::ask);
    ask();
}

void DesktopAppearance::ask()
{
    auto call = QDBusMessage::createMethodCall(service, path, interface, u"ReadAll"_s);
    call.setArguments({QStringList{group}});
    auto visible = std::make_shared<ProcessPrivacy::Pause>();
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, patienceMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, visible]() mutable {
        watcher->deleteLater();
        visible.reset();
        const QDBusMessage reply = watcher->reply();
        if (watcher->isError() || reply.signature() != u"a{sa{sv}}"_s)
            return;
        const QVariantMap values = valuesIn(reply.arguments().constFirst().value<QDBusArgument>());
        DesktopLook look = m_look;
        for (auto value = values.begin(); value != values.end(); ++value)
            look = with(look, value.key(), value.value());
        take(look);
    });
}

// As a message: a slot that takes the bus's own variant is found only once somebody has named that type.
void DesktopAppearance::settingChanged(const QDBusMessage &signal)
{
    const QVariantList said = signal.arguments();
    if (signal.signature() == u"ssv"_s && said[0].toString() == group)
        take(with(m_look, said[1].toString(), said[2].value<QDBusVariant>().variant()));
}

void DesktopAppearance::take(const DesktopLook &look)
{
    if (m_look == look)
        return;
    m_look = look;
    Q_EMIT changed(look);
}

} // namespace morvane
