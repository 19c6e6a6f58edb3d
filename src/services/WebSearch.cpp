#include "services/WebSearch.h"

#include "async/Clock.h"
#include "async/Work.h"
#include "deployment/DeploymentValues.h"
#include "security/ServiceIdentity.h"
#include "services/SearchCounters.h"
#include "services/SearchResults.h"
#include "services/WebAccessError.h"
#include "utils/log/Log.h"
#include "utils/text/Json.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = WebAccessError::Plain;

namespace {

constexpr auto braveGap = 1050ms; // within a plan of one call a second
constexpr qsizetype maxAnswerBytes = qsizetype{1024} * 1024;

HttpRequest requestFor(QUrl url, const QString &path, const QByteArray &query)
{
    const QString base = url.path();
    url.setPath((base.endsWith(u'/') ? base.chopped(1) : base) + path);
    url.setQuery(QString::fromLatin1(query));
    HttpRequest request;
    request.url = url;
    request.headers = {{"Accept", "application/json"}};
    request.timeout = 20s;
    request.redirects = HttpRequest::Redirects::Answered;
    return request;
}

QByteArray queryItem(const QString &query)
{
    return "q=" + QUrl::toPercentEncoding(query);
}

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

Plain braveRefusal(int status)
{
    Log::error(Log::Category::App, "Web search failed with HTTP %ld"_L1, {status});
    return status == 401 || status == 403 ? Plain::searchKeyRejected : Plain::searchFailed;
}

Plain braveFailure(const TransportError &error)
{
    if (error.code() == TransportError::Code::Cancelled)
        return Plain::cancelled;
    return error.code() == TransportError::Code::ResponseTooLarge ? Plain::searchFailed : Plain::offline;
}

Plain builtInFailure(const TransportError &error)
{
    return error.code() == TransportError::Code::Cancelled ? Plain::cancelled
                                                           : Plain::builtInSearchUnavailable;
}

WebSearch::Results braveResults(const QByteArray &body)
{
    const auto object = Json::parseObject(body);
    const auto web = object ? Json::object(*object, "web"_L1) : std::nullopt;
    const auto results = web ? Json::array(*web, "results"_L1) : std::nullopt;
    if (!results)
        throw WebAccessError(Plain::searchFailed);
    return SearchResults::read(*results, "description"_L1);
}

WebSearch::Results builtInResults(const QByteArray &body)
{
    const auto object = Json::parseObject(body);
    const auto results = object ? Json::array(*object, "results"_L1) : std::nullopt;
    if (!results)
        throw WebAccessError(Plain::builtInSearchUnavailable);
    return SearchResults::read(*results, "snippet"_L1);
}

} // namespace

WebSearch::Endpoints WebSearch::Endpoints::ofThisBuild()
{
    return {.brave = QUrl(u"https://api.search.brave.com"_s),
            .builtIn = QUrl(DeploymentValues::searchEndpoint)};
}

WebSearch::WebSearch(const Services &services, Endpoints endpoints,
                     std::shared_ptr<HttpSession> injectedSession)
    : m_services(services)
    , m_endpoints(std::move(endpoints))
    , m_injectedSession(std::move(injectedSession))
{}

QCoro::Task<WebSearch::Results> WebSearch::askBrave(std::shared_ptr<WebSearch> self, QString query,
                                                    QString key, std::stop_token stop)
{
    try {
        co_await keepBraveGap(self, stop);
        HttpRequest request =
            requestFor(self->m_endpoints.brave, u"/res/v1/web/search"_s, queryItem(query) + "&count=5");
        request.headers.push_back({"Accept-Encoding", "gzip"});
        request.headers.push_back({"X-Subscription-Token", key.toUtf8()});
        const Answer answer = co_await fetch(self, std::move(request), stop);
        if (!isSuccess(answer.status))
            throw WebAccessError(braveRefusal(answer.status));
        co_return braveResults(answer.body);
    } catch (const CancelledError &) {
        throw WebAccessError(Plain::cancelled);
    } catch (const TransportError &error) {
        throw WebAccessError(braveFailure(error));
    }
}

QCoro::Task<WebSearch::Results> WebSearch::askBuiltIn(std::shared_ptr<WebSearch> self, QString query,
                                                      std::stop_token stop)
{
    if (self->m_endpoints.builtIn.isEmpty())
        throw WebAccessError(Plain::searchNotConfigured);
    try {
        const auto identify = [identity = &self->m_services.identity] {
            return identity->credential(ServiceIdentity::Service::Search);
        };
        const QString credential = co_await self->m_services.work.run(identify, stop);
        self->throwIfClosed();
        HttpRequest request = requestFor(self->m_endpoints.builtIn, u"/v1/search"_s, queryItem(query));
        request.headers.push_back({"User-Agent", "MorvaneGPT-mac/1.0"});
        request.headers.push_back({"X-QF-Client", "1"});
        request.headers.push_back({"Authorization", "Bearer qf_" + credential.toLatin1()});
        const Answer answer = co_await fetch(self, std::move(request), stop);
        if (!isSuccess(answer.status)) {
            Log::error(Log::Category::App, "Built-in search proxy returned HTTP %ld"_L1, {answer.status});
            throw WebAccessError(Plain::builtInSearchUnavailable);
        }
        Results results = builtInResults(answer.body);
        self->countBuiltIn();
        co_return results;
    } catch (const CancelledError &) {
        throw WebAccessError(Plain::cancelled);
    } catch (const TransportError &error) {
        throw WebAccessError(builtInFailure(error));
    }
}

QCoro::Task<WebSearch::Answer> WebSearch::fetch(std::shared_ptr<WebSearch> self, HttpRequest request,
                                                std::stop_token stop)
{
    const auto session = self->m_injectedSession
                             ? self->m_injectedSession
                             : self->m_services.network.session(EgressFeature::webSearch, {});
    HttpResponse response = co_await session->send(std::move(request), stop);
    const int status = response.status;
    if (!isSuccess(status)) {
        co_await discardBody(std::move(response), stop);
        self->throwIfClosed();
        co_return Answer{status, {}};
    }
    const QByteArray body = co_await readBody(std::move(response), maxAnswerBytes, stop);
    self->throwIfClosed();
    co_return Answer{status, body};
}

// Waits again when another call has gone out meanwhile.
QCoro::Task<> WebSearch::keepBraveGap(std::shared_ptr<WebSearch> self, std::stop_token stop)
{
    const auto rest = [&search = *self] {
        const auto last = search.m_lastBraveCallAt;
        return last ? *last + braveGap - search.m_services.clock.elapsed() : 0ms;
    };
    while (rest() > 0ms) {
        co_await pause(self->m_services.clock, rest(), stop);
        self->throwIfClosed();
    }
    self->m_lastBraveCallAt = self->m_services.clock.elapsed();
}

void WebSearch::throwIfClosed() const
{
    if (m_isClosed)
        throw CancelledError();
}

void WebSearch::countBuiltIn()
{
    SearchCounters::raise(m_services.quotaDefaults, m_services.clock.now().toLocalTime().date());
    if (m_onProxiedSearch)
        m_onProxiedSearch();
}

} // namespace morvane
