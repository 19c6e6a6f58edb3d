#pragma once

#include "network/HttpSession.h"

#include <memory>
#include <unordered_map>

namespace morvane {

class CurlLoop;
class HttpExchange;

// HTTP/1.1 over libcurl on the event loop of the thread that made the session. No cookies, no cache, no
// proxy, no credentials of the machine; http and https only; certificates are always checked, TLS 1.2 is the
// least. Names are resolved on libcurl's own threads.
//
// A body comes compressed only when the caller's own Accept-Encoding offers it, and then arrives decoded.
class CurlHttpSession final : public HttpSession {
public:
    // With a non-empty `carrying`, only this machine and the local network are within reach. Both services
    // outlive the session. A request whose host leads to no address that `mayConnect` allows is Blocked.
    // `authorities` are certificates (PEM) that vouch for servers in place of the system's; none: the
    // system's.
    CurlHttpSession(EgressFeature feature, SensitiveDataSet carrying, NetworkLedger &ledger, Clock &clock,
                    AddressRule mayConnect = {}, QByteArray authorities = {});
    ~CurlHttpSession() override;

    [[nodiscard]] QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) override;

private:
    EgressFeature m_feature;
    SensitiveDataSet m_carrying;
    NetworkLedger &m_ledger;
    Clock &m_clock;
    AddressRule m_mayConnect;
    QByteArray m_authorities;
    std::unique_ptr<CurlLoop> m_loop;
    std::unordered_map<HttpExchange *, std::shared_ptr<HttpExchange>> m_exchanges; // under way
};

} // namespace morvane
