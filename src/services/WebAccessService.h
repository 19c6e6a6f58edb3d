#pragma once

#include "services/PageReader.h"
#include "services/WebAccessing.h"
#include "services/WebSearch.h"

namespace morvane {

// Searches the web and reads pages. A search carries the query and a read the address; nothing else of the
// person leaves.
//
// A search goes to Brave Search when the person has a key of their own, else to the product's search
// endpoint, which is a value of the deployment. In a build without that value a search without a key is
// searchNotConfigured. A key that can't be read ends a search, whatever else could answer it.
//
// GUI thread. Calls may outlive the service only until they notice: they end with cancelled.
class WebAccessService final : public WebAccessing {
public:
    enum class Backend { brave }; // whose key a person can give

    using Services = WebSearch::Services;
    using Endpoints = WebSearch::Endpoints;

    // All services outlive it. An `injectedSession` takes the place of the network's sessions, `resolve` that
    // of the system's resolver.
    explicit WebAccessService(const Services &services, const Endpoints &endpoints = Endpoints::ofThisBuild(),
                              HostLookup::Resolve resolve = systemResolver(),
                              std::shared_ptr<HttpSession> injectedSession = nullptr);
    ~WebAccessService() override;
    WebAccessService(const WebAccessService &) = delete;
    WebAccessService &operator=(const WebAccessService &) = delete;

    [[nodiscard]] static QString searchKeyAccount();
    [[nodiscard]] static HostLookup::Resolve systemResolver();

    [[nodiscard]] Backend backend() const { return Backend::brave; }
    [[nodiscard]] bool usesOwnKey() const { return searchService() == SearchService::personsOwn; }

    [[nodiscard]] SearchService searchService() const override;
    [[nodiscard]] QCoro::Task<std::vector<SearchResult>> search(QString query, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<Page> readPage(QString url, qsizetype limit, std::stop_token stop) override;

    // Whether Brave Search takes the key: throws WebAccessError when it doesn't.
    [[nodiscard]] QCoro::Task<> testKey(QString key, std::stop_token stop);

    // Told after each search through the product's endpoint.
    void setOnProxiedSearch(std::function<void()> told) { m_search->setOnProxiedSearch(std::move(told)); }

private:
    [[nodiscard]] QString ownKey() const; // empty when there is none; throws KeychainError

    Services m_services;
    HostLookup m_hosts;
    std::shared_ptr<HttpSession> m_injectedSession;
    std::shared_ptr<WebSearch> m_search;
};

} // namespace morvane
