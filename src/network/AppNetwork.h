#pragma once

#include "network/HttpSession.h"

#include <map>
#include <mutex>
#include <utility>

namespace morvane {

// The application's sessions, one for each feature and set of private data carried. A session that carries
// any reaches only this machine and the local network, by the name of the host and by the address that the
// name leads to when its socket is opened; one that reads web pages never connects there.
//
// The cache may be asked from any thread; a session belongs to the thread that asked for it first, which in
// this program is the GUI thread. Ledger and clock outlive every session.
class AppNetwork final : public HttpSessionProviding {
public:
    // At this many sessions the whole cache goes, so that it can't grow without bound. Requests under way
    // go on in the sessions that their callers hold.
    static constexpr std::size_t capacity = 64;

    AppNetwork(NetworkLedger &ledger, Clock &clock);

    [[nodiscard]] std::shared_ptr<HttpSession> session(EgressFeature feature,
                                                       SensitiveDataSet carrying) override;

private:
    using Key = std::pair<EgressFeature, SensitiveDataSet::Int>;

    NetworkLedger &m_ledger;
    Clock &m_clock;
    std::mutex m_mutex;
    std::map<Key, std::shared_ptr<HttpSession>> m_sessions; // guarded by m_mutex
};

} // namespace morvane
