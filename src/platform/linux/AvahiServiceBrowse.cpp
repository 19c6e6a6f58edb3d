#include "platform/linux/AvahiServiceBrowse.h"

#include "async/Clock.h"
#include "platform/linux/AvahiServiceBrowsing.h"

#include <QDBusObjectPath>
#include <QPointer>

#include <algorithm>
#include <array>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Reason = BrowseFailure::Reason;

namespace {

constexpr int any = -1;                // interface or protocol
constexpr uint ownAnnouncement = 8;    // AVAHI_LOOKUP_RESULT_LOCAL
constexpr uint hostAlone = 4 | 8;      // AVAHI_LOOKUP_NO_TXT, AVAHI_LOOKUP_NO_ADDRESS
constexpr qsizetype hostArgument = 5;  // of a resolved service
constexpr auto resolvePatience = 6s;   // the daemon itself gives up after 5
constexpr qsizetype longestHost = 255; // RFC 1035

// The bus, and what starts services for it, say in these ways that there is no daemon.
constexpr std::array absences{
    "org.freedesktop.DBus.Error.ServiceUnknown"_L1, "org.freedesktop.DBus.Error.NameHasNoOwner"_L1,
    "org.freedesktop.DBus.Error.NoServer"_L1,       "org.freedesktop.DBus.Error.Disconnected"_L1,
    "org.freedesktop.DBus.Error.Spawn."_L1,         "org.freedesktop.systemd1."_L1,
};

Reason reasonOf(const QString &error)
{
    if (error == "org.freedesktop.DBus.Error.AccessDenied"_L1 ||
        error == "org.freedesktop.Avahi.AccessDeniedError"_L1)
        return Reason::refused;
    const auto matches = [&](QLatin1StringView absence) { return error.startsWith(absence); };
    return std::any_of(absences.begin(), absences.end(), matches) ? Reason::noSearch : Reason::failed;
}

QString hostIn(const QDBusMessage &resolved)
{
    QString host = resolved.arguments().value(hostArgument).toString();
    if (host.endsWith(u'.'))
        host.chop(1);
    return host.size() <= longestHost ? host.simplified() : QString();
}

} // namespace

AvahiServiceBrowse::AvahiServiceBrowse(AvahiServiceBrowsing &house, QString type,
                                       ServiceBrowsing::Handlers handlers)
    : m_house(house)
    , m_type(std::move(type))
    , m_handlers(std::move(handlers))
{
    m_house.m_browses.push_back(this);
}

AvahiServiceBrowse::~AvahiServiceBrowse()
{
    std::erase(m_house.m_browses, this);
    if (!m_path.isEmpty())
        m_house.release(m_path);
}

void AvahiServiceBrowse::begin()
{
    m_house.ask(*this);
}

// Whoever restarts the daemon has it back in a moment.
void AvahiServiceBrowse::wentAway()
{
    m_path.clear();
    for (auto &[sighting, isFresh] : m_sightings)
        isFresh = false;
    m_waiting = m_house.m_clock.after(AvahiServiceBrowsing::patience, [this] {
        fail({Reason::noSearch, u"the daemon went away"_s});
    });
}

void AvahiServiceBrowse::cameBack()
{
    if (m_waiting)
        begin();
}

void AvahiServiceBrowse::began(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ErrorMessage) {
        m_waiting.reset();
        if (!m_path.isEmpty())
            m_house.release(m_path);
        m_path = reply.arguments().value(0).value<QDBusObjectPath>().path();
        return m_house.adopt(m_path, *this);
    }
    const bool diedMeanwhile = reply.errorName() == "org.freedesktop.DBus.Error.NoReply"_L1;
    if (diedMeanwhile && !m_waiting)
        wentAway();
    else if (!diedMeanwhile)
        fail({reasonOf(reply.errorName()), reply.errorMessage()});
}

void AvahiServiceBrowse::take(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    const QString member = signal.member();
    if (member == "AllForNow"_L1)
        return forgetStale();
    if (member == "Failure"_L1)
        return fail({Reason::failed, arguments.value(0).toString()});
    const Sighting sighting{arguments.value(0).toInt(), arguments.value(1).toInt(),
                            arguments.value(2).toString()};
    if (member == "ItemNew"_L1 && (arguments.value(5).toUInt() & ownAnnouncement) == 0)
        add(sighting);
    else if (member == "ItemRemove"_L1 && m_sightings.erase(sighting) > 0)
        publish();
}

void AvahiServiceBrowse::add(const Sighting &sighting)
{
    if (m_sightings.size() >= mostServices && !m_sightings.contains(sighting))
        return;
    m_sightings[sighting] = true;
    const QString &name = std::get<QString>(sighting);
    if (m_hosts.contains(name))
        publish();
    else if (!m_resolving.contains(name))
        resolve(sighting);
}

// A service shows once its computer is known, or is known not to tell.
void AvahiServiceBrowse::resolve(const Sighting &sighting)
{
    const auto &[interface, protocol, name] = sighting;
    m_resolving.insert(name);
    m_house.call(u"ResolveService"_s, {interface, protocol, name, m_type, u"local"_s, any, hostAlone},
                 resolvePatience, [self = QPointer(this), name = name](const QDBusMessage &reply) {
                     if (!self)
                         return;
                     self->m_resolving.remove(name);
                     self->m_hosts[name] =
                         reply.type() == QDBusMessage::ErrorMessage ? QString() : hostIn(reply);
                     self->publish();
                 });
}

// What the former daemon knew and the present one doesn't is gone.
void AvahiServiceBrowse::forgetStale()
{
    if (std::erase_if(m_sightings, [](const auto &sighting) { return !sighting.second; }) > 0)
        publish();
}

void AvahiServiceBrowse::publish()
{
    QSet<QString> told;
    std::vector<BrowsedService> services;
    for (const auto &[sighting, isFresh] : m_sightings) {
        const QString &name = std::get<QString>(sighting);
        const auto host = m_hosts.constFind(name);
        if (host == m_hosts.constEnd() || told.contains(name))
            continue;
        told.insert(name);
        services.push_back({name.simplified(), *host});
    }
    const auto tell = m_handlers.resultsChanged; // which may destroy this
    tell(std::move(services));
}

void AvahiServiceBrowse::fail(BrowseFailure failure)
{
    const auto tell = m_handlers.failed; // which may destroy this
    tell(std::move(failure));
}

} // namespace morvane
