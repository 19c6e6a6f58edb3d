#pragma once

#include "async/Lifeline.h"
#include "network/HostLookup.h"
#include "network/PrivateNetworkAddress.h"

#include <QDateTime>

#include <functional>
#include <map>

namespace morvane {

class Clock;
class Work;

// Whether a host is this machine or on its network, a name judged by the addresses that it leads to. A name
// may lead elsewhere a moment later: what is sent is watched once more where its socket is opened. GUI
// thread.
class HostPrivacy {
public:
    using Lookup = std::function<QCoro::Task<QStringList>(QString name, std::stop_token stop)>;
    using Subnets = std::function<std::vector<PrivateNetworkAddress::Subnet>()>;

    static constexpr std::chrono::seconds keptFor{60};

    HostPrivacy(Clock &clock, Work &work);

    // Take the place of the system's resolver and of this machine's interfaces.
    void setLookup(Lookup lookup) { m_lookup = std::move(lookup); }
    void setSubnets(Subnets subnets) { m_subnets = std::move(subnets); }

    // By the text of the host alone, as the egress gate judges it.
    [[nodiscard]] static bool staysNear(const QString &baseURL);

    // A name is private when all its addresses are, and not when it can't be looked up. Throws
    // CancelledError.
    [[nodiscard]] QCoro::Task<bool> isPrivate(QString host, std::stop_token stop);

private:
    struct Answer {
        QDateTime at;
        bool isPrivate = false;
    };

    [[nodiscard]] bool areLocal(const QStringList &addresses) const;

    Clock &m_clock;
    HostLookup m_resolver;
    Lookup m_lookup;
    Subnets m_subnets = PrivateNetworkAddress::machineSubnets;
    std::map<QString, Answer> m_answers; // by host
    Lifeline m_lifeline;
};

} // namespace morvane
