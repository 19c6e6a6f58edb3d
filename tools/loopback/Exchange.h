#pragma once

#include "loopback/HoldPoint.h"
#include "loopback/Request.h"
#include "loopback/WireRecord.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <chrono>

namespace morvane {

using Work = boost::asio::awaitable<void>;

// Thrown out of a wait when the client closes its side; ends the exchange.
class ClientLeft final : public std::exception {
public:
    [[nodiscard]] const char *what() const noexcept override { return "the client left"; }
};

// One request and the answer to it, played byte by byte, so that any fault can be played too. Every member
// that waits throws ClientLeft, or a system_error of the socket, when the client goes away.
class Exchange {
public:
    // What the connection watches while an answer is played.
    struct Line {
        boost::asio::ip::tcp::socket socket;
        boost::asio::steady_timer timer; // the pause under way
        WireRecord &record;
        int number; // of the connection, counted from 1
        bool clientLeft = false;
    };
    using Headers = std::vector<std::pair<QByteArray, QByteArray>>;

    Exchange(Line &line, const Request &request);

    [[nodiscard]] const Request &request() const { return m_request; }
    [[nodiscard]] boost::asio::ip::tcp::endpoint localEndpoint() const;
    [[nodiscard]] bool keepsConnection() const { return m_keepsConnection; }

    // Raw bytes, nothing added.
    Work send(QByteArray bytes);
    Work pause(std::chrono::milliseconds duration);
    Work stall();                // until the client leaves
    Work hold(HoldPoint &point); // until it is told to go on, or the client leaves

    // A complete response with its Content-Length.
    Work respond(int status, QByteArray contentType, QByteArray body, Headers headers = {});
    Work respondJson(int status, QJsonObject body);

    // A response of unknown length in chunked coding.
    Work beginStream(int status, QByteArray contentType);
    Work chunk(QByteArray bytes);
    Work endStream();

    // The connection ends behind what was sent, whatever was promised.
    void cut() { m_keepsConnection = false; }

private:
    Line &m_line;
    const Request &m_request;
    bool m_keepsConnection = true;
};

} // namespace morvane
