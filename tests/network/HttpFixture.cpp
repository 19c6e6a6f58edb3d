#include "HttpFixture.h"

namespace morvane {

HttpRequest HttpTest::get(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

HttpRequest HttpTest::post(const QUrl &url, const QByteArray &body)
{
    HttpRequest request = get(url);
    request.method = "POST";
    request.body = body;
    return request;
}

// Doesn't keep the session: a test may take it away midway.
QCoro::Task<> HttpTest::run(std::shared_ptr<CurlHttpSession> session, HttpRequest request,
                            std::stop_token stop, std::shared_ptr<Ending> ending)
{
    try {
        auto sending = session->send(std::move(request), stop);
        session.reset();
        HttpResponse response = co_await std::move(sending);
        ending->status = response.status;
        ending->url = response.url;
        AsyncStream<QByteArray> pieces = std::move(response.body);
        while (const auto piece = co_await pieces.next(stop))
            ending->body.append(*piece);
    } catch (const TransportError &error) {
        ending->error = error.code();
    } catch (const CancelledError &) {
        ending->isCancelled = true;
    }
    ending->isDone = true;
}

std::shared_ptr<HttpTest::Ending> HttpTest::begin(const HttpRequest &request, std::stop_token stop)
{
    const auto ending = std::make_shared<Ending>();
    run(session, request, std::move(stop), ending);
    return ending;
}

HttpTest::Ending HttpTest::fetch(const HttpRequest &request)
{
    const auto ending = begin(request);
    TestWait::until([&] { return ending->isDone; });
    return *ending;
}

std::string HttpTest::textOf(const NetworkLedger::Entry &row)
{
    return QStringLiteral("%1 %2/%3 %4")
        .arg(row.host)
        .arg(row.bytesSent)
        .arg(row.bytesReceived)
        .arg(row.outcome.text())
        .toStdString();
}

} // namespace morvane
