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

    static HttpRequest get(const QUrl &url);
    static HttpRequest post(const QUrl &url, const QByteArray &body);

    // Starts the request and reads its body to the end.
    std::shared_ptr<Ending> begin(const HttpRequest &request, std::stop_token stop = {});
    Ending fetch(const HttpRequest &request);

    [[nodiscard]] std::vector<NetworkLedger::Entry> rows() const { return ledger.snapshot().entries; }

    // "host sent/received outcome" of a row.
    static std::string textOf(const NetworkLedger::Entry &row);

    NetworkLedger ledger;
    ManualClock clock;
    std::shared_ptr<CurlHttpSession> session =
        std::make_shared<CurlHttpSession>(EgressFeature::aiModel, SensitiveDataSet(), ledger, clock);

private:
    static QCoro::Task<> run(std::shared_ptr<CurlHttpSession> session, HttpRequest request,
                             std::stop_token stop, std::shared_ptr<Ending> ending);
};

} // namespace morvane
