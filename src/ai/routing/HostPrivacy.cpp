#include "ai/routing/HostPrivacy.h"

#include "ai/routing/Freshness.h"
#include "async/Clock.h"
#include "utils/text/Text.h"

#include <QUrl>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

HostPrivacy::HostPrivacy(Clock &clock, Work &work)
    : m_clock(clock)
    , m_resolver(work)
    , m_lookup([this](QString name, std::stop_token stop) {
        return m_resolver.addresses(std::move(name), std::move(stop));
    })
{}

bool HostPrivacy::staysNear(const QString &baseURL)
{
    return PrivateNetworkAddress::isNear(QUrl(Text::trimmed(baseURL)).host());
}

QCoro::Task<bool> HostPrivacy::isPrivate(QString host, std::stop_token stop)
{
    const QString name = PrivateNetworkAddress::normalisedHost(host);
    if (const auto literal = PrivateNetworkAddress::isPrivateLiteral(name))
        co_return *literal;
    if (name == "localhost"_L1) // never looked up, here as in the connection
        co_return true;
    const auto known = m_answers.find(name);
    if (known != m_answers.end() && isFresh(known->second.at, m_clock.now(), keptFor))
        co_return known->second.isPrivate;

    const auto check = m_lifeline.check(stop);
    const QStringList addresses = co_await m_lookup(name, stop);
    check();
    if (addresses.isEmpty())
        co_return false;
    const bool isPrivate = areLocal(addresses);
    m_answers.insert_or_assign(name, Answer{m_clock.now(), isPrivate});
    co_return bool(isPrivate);
}

bool HostPrivacy::areLocal(const QStringList &addresses) const
{
    const auto subnets = m_subnets();
    return std::all_of(addresses.begin(), addresses.end(), [&subnets](const QString &address) {
        return PrivateNetworkAddress::isInside(address, subnets);
    });
}

} // namespace morvane
