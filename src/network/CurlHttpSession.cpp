#include "network/CurlHttpSession.h"

#include "network/CurlLoop.h"
#include "network/HttpExchange.h"

#include <utility>

namespace morvane {

namespace {

QCoro::Task<HttpResponse> awaitHead(AsyncStream<HttpResponse> heads, std::stop_token stop)
{
    // A local, so that the request is gone before the caller hears of a stop.
    AsyncStream<HttpResponse> head = std::move(heads);
    std::optional<HttpResponse> response = co_await head.next(stop);
    if (!response)
        throw CancelledError();
    co_return std::move(*response);
}

} // namespace

CurlHttpSession::CurlHttpSession(EgressFeature feature, SensitiveDataSet carrying, NetworkLedger &ledger,
                                 Clock &clock, AddressRule mayConnect, QByteArray authorities)
    : m_feature(feature)
    , m_carrying(carrying)
    , m_ledger(ledger)
    , m_clock(clock)
    , m_mayConnect(std::move(mayConnect))
    , m_authorities(std::move(authorities))
    , m_loop(std::make_unique<CurlLoop>())
{}

CurlHttpSession::~CurlHttpSession()
{
    for (const auto &[key, exchange] : std::exchange(m_exchanges, {}))
        exchange->abandon();
}

QCoro::Task<HttpResponse> CurlHttpSession::send(HttpRequest request, std::stop_token stop)
{
    const HttpExchange::Setting setting{
        .feature = m_feature,
        .carrying = m_carrying,
        .mayConnect = m_mayConnect,
        .authorities = m_authorities,
        .ledger = m_ledger,
        .clock = m_clock,
        .loop = *m_loop,
        .ended = [this](HttpExchange &exchange) { m_exchanges.erase(&exchange); },
    };
    const auto exchange = std::make_shared<HttpExchange>(setting, std::move(request));
    m_exchanges.emplace(exchange.get(), exchange);
    return awaitHead(exchange->start(stop), stop);
}

} // namespace morvane
