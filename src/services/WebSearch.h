#pragma once

#include "network/HttpSession.h"
#include "services/WebAccessing.h"

#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace morvane {

class Clock;
class KeychainServicing;
class ServiceIdentity;
class SettingsRepository;
class Work;

// The two services that answer a query, asked with nothing but it. Redirects are not followed: query and
// credential go to the endpoint alone.
//
// Tasks share the search and end with cancelled once it is closed. Both throw WebAccessError. GUI thread.
class WebSearch {
public:
    using Results = std::vector<WebAccessing::SearchResult>;

    struct Services {
        HttpSessionProviding &network;
        KeychainServicing &keychain;
        ServiceIdentity &identity;
        SettingsRepository &quotaDefaults; // counts of the product's own searches
        Clock &clock;
        Work &work;
    };

    struct Endpoints {
        QUrl brave;
        QUrl builtIn; // empty when there is none

        [[nodiscard]] static Endpoints ofThisBuild();
    };

    // The services outlive it until close(). An `injectedSession` takes the place of the network's.
    WebSearch(const Services &services, Endpoints endpoints, std::shared_ptr<HttpSession> injectedSession);

    [[nodiscard]] bool hasBuiltIn() const { return !m_endpoints.builtIn.isEmpty(); }

    // Brave Search with a key of the person's. Calls keep a gap between them; a call that comes too soon
    // waits. An unreachable server is offline.
    [[nodiscard]] static QCoro::Task<Results> askBrave(std::shared_ptr<WebSearch> self, QString query,
                                                       QString key, std::stop_token stop);

    // The product's endpoint. searchNotConfigured when there is none.
    [[nodiscard]] static QCoro::Task<Results> askBuiltIn(std::shared_ptr<WebSearch> self, QString query,
                                                         std::stop_token stop);

    void setOnProxiedSearch(std::function<void()> told) { m_onProxiedSearch = std::move(told); }
    void close() { m_isClosed = true; }

private:
    struct Answer {
        int status = 0;
        QByteArray body; // of a success
    };

    static QCoro::Task<Answer> fetch(std::shared_ptr<WebSearch> self, HttpRequest request,
                                     std::stop_token stop);
    static QCoro::Task<> keepBraveGap(std::shared_ptr<WebSearch> self, std::stop_token stop);
    void throwIfClosed() const;
    void countBuiltIn();

    Services m_services;
    Endpoints m_endpoints;
    std::shared_ptr<HttpSession> m_injectedSession;
    std::function<void()> m_onProxiedSearch;
    std::optional<std::chrono::milliseconds> m_lastBraveCallAt; // by Clock::elapsed()
    bool m_isClosed = false;
};

} // namespace morvane
