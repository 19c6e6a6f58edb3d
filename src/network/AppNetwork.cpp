#include "network/AppNetwork.h"

#include "network/CurlHttpSession.h"
#include "network/PublicAddress.h"

namespace morvane {

namespace {

// A web page's name is looked up again when it is connected to, and may lead elsewhere than when it was
// checked.
AddressRule ruleOf(EgressFeature feature)
{
    if (feature != EgressFeature::webPage)
        return {};
    return [](const QByteArray &bytes) {
        return PublicAddress::isPublic(bytes, PrivateNetworkAddress::machineSubnets());
    };
}

} // namespace

AppNetwork::AppNetwork(NetworkLedger &ledger, Clock &clock)
    : m_ledger(ledger)
    , m_clock(clock)
{}

std::shared_ptr<HttpSession> AppNetwork::session(EgressFeature feature, SensitiveDataSet carrying)
{
    const Key key{feature, SensitiveDataSet::Int(carrying)};
    const std::scoped_lock lock(m_mutex);
    if (const auto known = m_sessions.find(key); known != m_sessions.end())
        return known->second;
    if (m_sessions.size() >= capacity)
        m_sessions.clear();
    auto session = std::make_shared<CurlHttpSession>(feature, carrying, m_ledger, m_clock, ruleOf(feature));
    m_sessions.emplace(key, session);
    return session;
}

} // namespace morvane
