#include "services/WebAccessService.h"

#include "network/PrivateNetworkAddress.h"
#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "services/WebAccessError.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<WebSearch::Results> noQuery()
{
    throw WebAccessError(WebAccessError::Plain::emptyQuery);
    co_return WebSearch::Results();
}

QCoro::Task<> answered(QCoro::Task<WebSearch::Results> search)
{
    co_await std::move(search);
}

} // namespace

WebAccessService::WebAccessService(const Services &services, const Endpoints &endpoints,
                                   HostLookup::Resolve resolve, std::shared_ptr<HttpSession> injectedSession)
    : m_services(services)
    , m_hosts(services.work, std::move(resolve))
    , m_injectedSession(std::move(injectedSession))
    , m_search(std::make_shared<WebSearch>(services, endpoints, m_injectedSession))
{}

WebAccessService::~WebAccessService()
{
    m_search->close();
}

QString WebAccessService::searchKeyAccount()
{
    return u"brave-search-api-key"_s;
}

HostLookup::Resolve WebAccessService::systemResolver()
{
    return PrivateNetworkAddress::resolve;
}

bool WebAccessService::usesOwnKey() const
{
    return !ownKey().isEmpty();
}

QCoro::Task<WebSearch::Results> WebAccessService::search(QString query, std::stop_token stop)
{
    const QString trimmed = Text::trimmed(query);
    if (trimmed.isEmpty())
        return noQuery();
    const QString key = ownKey();
    return key.isEmpty() ? WebSearch::askBuiltIn(m_search, trimmed, stop)
                         : WebSearch::askBrave(m_search, trimmed, key, stop);
}

QCoro::Task<WebAccessing::Page> WebAccessService::readPage(QString url, qsizetype limit, std::stop_token stop)
{
    const auto session =
        m_injectedSession ? m_injectedSession : m_services.network.session(EgressFeature::webPage, {});
    return PageReader(session, m_hosts, m_services.work).read(url, limit, stop);
}

QCoro::Task<> WebAccessService::testKey(QString key, std::stop_token stop)
{
    return answered(WebSearch::askBrave(m_search, u"test"_s, key, stop));
}

QString WebAccessService::ownKey() const
{
    try {
        return m_services.keychain.read(searchKeyAccount()).value_or(QString());
    } catch (const KeychainError &) {
        return {}; // a key that isn't handed out can't be used
    }
}

} // namespace morvane
