#include "services/WebAccessService.h"

#include "network/PrivateNetworkAddress.h"
#include "security/KeychainError.h"
#include "security/KeychainServicing.h"
#include "services/WebAccessError.h"
#include "utils/text/Text.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<WebSearch::Results> failed(std::exception_ptr error)
{
    std::rethrow_exception(error);
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

WebAccessing::SearchService WebAccessService::searchService() const
{
    try {
        if (ownKey().isEmpty())
            return m_search->hasBuiltIn() ? SearchService::builtIn : SearchService::none;
    } catch (const KeychainError &) {
        // There may be one, and then it is the person's choice.
    }
    return SearchService::personsOwn;
}

QCoro::Task<WebSearch::Results> WebAccessService::search(QString query, std::stop_token stop)
{
    const QString trimmed = Text::trimmed(query);
    if (trimmed.isEmpty())
        return failed(std::make_exception_ptr(WebAccessError(WebAccessError::Plain::emptyQuery)));
    try {
        const QString key = ownKey();
        return key.isEmpty() ? WebSearch::askBuiltIn(m_search, trimmed, stop)
                             : WebSearch::askBrave(m_search, trimmed, key, stop);
    } catch (const KeychainError &) {
        return failed(std::current_exception());
    }
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
    return m_services.keychain.read(searchKeyAccount()).value_or(QString());
}

} // namespace morvane
