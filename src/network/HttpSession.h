#pragma once

#include "async/AsyncStream.h"
#include "network/EgressTypes.h"
#include "network/TransportError.h"

#include <QByteArray>
#include <QCoroTask>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace morvane {

class Clock;
class NetworkLedger;

struct HttpHeader {
    QByteArray name;
    QByteArray value;
};

struct HttpRequest {
    QByteArray method = "GET";
    QUrl url;
    std::vector<HttpHeader> headers;
    QByteArray body;

    // Longest silence in either direction, connecting included, before the request fails with TimedOut.
    std::chrono::milliseconds timeout{60'000};

    // Longest time for all of it, redirects and body included, before it fails with TimedOut; absent: as long
    // as there is no silence.
    std::optional<std::chrono::milliseconds> limit;

    // Whoever judges a hop by more than its address takes the redirect itself for the answer and asks again.
    enum class Redirects { Followed, Answered };
    Redirects redirects = Redirects::Followed;

    // Asked before each redirect hop, after the gate; absent means that every hop the gate lets through is
    // followed. A refused hop makes the redirect response itself the answer.
    std::function<bool(const QUrl &from, const QUrl &to)> followsRedirect;
};

struct HttpResponse {
    int status = 0;
    QUrl url;                        // of the last hop
    std::vector<HttpHeader> headers; // of the last hop, in order

    // Body pieces as they arrive, decoded from any transfer and content encoding. Ends with TransportError
    // when the connection breaks. Dropping it closes the connection: its reader has enough, and the ledger
    // shows the status; only a stop token makes it a cancelled request. The sender is held back while the
    // consumer lags, so unread bytes stay bounded.
    AsyncStream<QByteArray> body;

    // Value of the first header of that name, letter case ignored.
    [[nodiscard]] std::optional<QByteArray> header(QByteArrayView name) const;
};

// Judges the address that a host's name led to, 4 or 16 bytes in network order, before a socket to it exists.
using AddressRule = std::function<bool(const QByteArray &addressBytes)>;

// Requests of one feature that carry one set of private data. Each passes the gate before a socket exists,
// and every hop leaves a ledger row when it ends. GUI thread.
//
// Dropping the last reference ends the requests under way, so a caller keeps the session while it reads.
class HttpSession {
public:
    virtual ~HttpSession() = default;

    // The response of the last hop, once its headers are here. Throws TransportError, or CancelledError once
    // `stop` is triggered (the request is gone by then).
    [[nodiscard]] virtual QCoro::Task<HttpResponse> send(HttpRequest request, std::stop_token stop) = 0;
};

// The rest of a body. Throws TransportError::ResponseTooLarge when it passes `limit` bytes.
[[nodiscard]] QCoro::Task<QByteArray> readBody(HttpResponse response, qsizetype limit, std::stop_token stop);

// Reads a body that nobody wants to its end, when that is near, so that its connection can be used again.
// Throws CancelledError only.
[[nodiscard]] QCoro::Task<> discardBody(HttpResponse response, std::stop_token stop);

// Where requests get their session. The one way to the network.
class HttpSessionProviding {
public:
    virtual ~HttpSessionProviding() = default;
    [[nodiscard]] virtual std::shared_ptr<HttpSession> session(EgressFeature feature,
                                                               SensitiveDataSet carrying) = 0;
};

} // namespace morvane
