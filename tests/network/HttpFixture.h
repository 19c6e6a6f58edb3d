#pragma once

#include "network/CurlHttpSession.h"
#include "network/NetworkLedger.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"

#include <QSemaphore>

#include <gtest/gtest.h>

namespace morvane {

// A session over a ledger of its own and a clock that stands still.
class HttpTest : public testing::Test {
protected:
    // How a request ended: a response and its whole body, or an error.
    struct Ending {
        int status = 0;
        QUrl url;
        QByteArray body;
        std::optional<TransportError::Code> error; // also of a body that broke after its head
        bool isCancelled = false;
        bool isDone = false;
    };

    // Answers each request with this.
    static ScriptedServer::Script ok(const QByteArray &body, const QByteArray &headers = {})
    {
        return ScriptedServer::answering(ScriptedServer::response("200 OK", body, headers));
    }
    static HttpRequest get(const QUrl &url)
    {
        HttpRequest request;
        request.url = url;
        return request;
    }
    static HttpRequest post(const QUrl &url, const QByteArray &body)
    {
        HttpRequest request = get(url);
        request.method = "POST";
        request.body = body;
        return request;
    }

    // Starts the request and reads its body to the end.
    std::shared_ptr<Ending> begin(const HttpRequest &request, std::stop_token stop = {})
    {
        const auto ending = std::make_shared<Ending>();
        run(session, request, std::move(stop), ending);
        return ending;
    }
    static void awaitEnd(const std::shared_ptr<Ending> &ending)
    {
        TestWait::until([&] { return ending->isDone; });
    }
    Ending fetch(const HttpRequest &request)
    {
        const auto ending = begin(request);
        awaitEnd(ending);
        return *ending;
    }

    [[nodiscard]] std::vector<NetworkLedger::Entry> rows() const { return ledger.snapshot().entries; }

    // "host sent/received outcome" of a row.
    static std::string textOf(const NetworkLedger::Entry &row)
    {
        return QStringLiteral("%1 %2/%3 %4")
            .arg(row.host)
            .arg(row.bytesSent)
            .arg(row.bytesReceived)
            .arg(row.outcome.text())
            .toStdString();
    }

    NetworkLedger ledger;
    ManualClock clock;
    std::shared_ptr<CurlHttpSession> session =
        std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveDataSet(), ledger, clock);

private:
    // Doesn't keep the session: a test may take it away midway.
    static QCoro::Task<> run(std::shared_ptr<CurlHttpSession> session, HttpRequest request,
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
};

} // namespace morvane
