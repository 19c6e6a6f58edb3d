#include "ReleaseService.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray origin(std::uint16_t port)
{
    return "http://127.0.0.1:" + QByteArray::number(port);
}

} // namespace

ReleaseService::ReleaseService(QByteArray name, QByteArray archive, PracticeFolder folder)
    : m_name(std::move(name))
    , m_delivery(std::move(archive), std::move(folder))
{}

Work ReleaseService::answer(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QByteArray path = "/ollama/ollama/releases/download/v0.34.0/" + m_name;
    const QByteArray stored = "/release-assets/1/" + m_name;
    const std::uint16_t port = exchange.localEndpoint().port();
    const bool reads = request.method == "GET" || request.method == "HEAD";
    // A real storage's address carries its permission along.
    const QByteArray usual =
        origin(m_storagePort) + stored + "?se=2026-12-31T00%3A00%3A00Z&sig=practice%2Bonly%3D";
    if (reads && port != m_storagePort && request.path() == path)
        co_await m_delivery.redirect(exchange, usual, origin(port) + path);
    else if (reads && port == m_storagePort && request.path() == stored)
        co_await m_delivery.deliver(exchange);
    else if (request.method == "POST")
        co_await play(exchange);
    else
        co_await exchange.respond(404, "text/plain", "Not Found");
}

Work ReleaseService::play(Exchange &exchange)
{
    const QString kind = exchange.request().query(u"delivery"_s);
    int status = 204;
    if (exchange.request().path() == "/go-on")
        m_delivery.goOn();
    else if (exchange.request().path() == "/play" && Delivery::has(kind))
        m_delivery.setKind(kind);
    else
        status = 404;
    co_await exchange.respond(status, "text/plain", QByteArray());
}

} // namespace morvane
