#include "loopback/Exchange.h"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/status.hpp>

#include <QJsonDocument>

#include <memory>

namespace morvane {

namespace asio = boost::asio;
using asio::use_awaitable;

namespace {

QByteArray head(int status, const QByteArray &contentType, const QByteArray &framing,
                const Exchange::Headers &headers)
{
    const auto known = boost::beast::http::int_to_status(static_cast<unsigned>(status));
    const auto reason = boost::beast::http::obsolete_reason(known); // nothing but a word for people
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + ' ' +
                       QByteArray(reason.data(), static_cast<qsizetype>(reason.size())) + "\r\n";
    bytes += "Server: morvane-loopback\r\nContent-Type: " + contentType + "\r\n" + framing + "\r\n";
    for (const auto &[name, value] : headers)
        bytes += name + ": " + value + "\r\n";
    return bytes + "\r\n";
}

} // namespace

Exchange::Exchange(Line &line, const Request &request)
    : m_line(line)
    , m_request(request)
{}

asio::ip::tcp::endpoint Exchange::localEndpoint() const
{
    return m_line.socket.local_endpoint();
}

Work Exchange::send(QByteArray bytes)
{
    m_line.record.sent(m_line.number, bytes);
    const auto buffer = asio::buffer(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    co_await asio::async_write(m_line.socket, buffer, use_awaitable);
}

Work Exchange::pause(std::chrono::milliseconds duration)
{
    if (!m_line.clientLeft) {
        boost::system::error_code ignored; // the watcher cancels the timer when the client leaves
        m_line.timer.expires_after(duration);
        co_await m_line.timer.async_wait(asio::redirect_error(use_awaitable, ignored));
    }
    if (m_line.clientLeft)
        throw ClientLeft();
}

Work Exchange::stall()
{
    while (true)
        co_await pause(std::chrono::hours(1));
}

Work Exchange::hold(HoldPoint &point)
{
    point.wait(&m_line.timer);
    const std::shared_ptr<void> leaving(nullptr, [this, &point](void *) { point.leave(&m_line.timer); });
    while (!point.takeWord())
        co_await pause(std::chrono::hours(1));
}

Work Exchange::respond(int status, QByteArray contentType, QByteArray body, Headers headers)
{
    const QByteArray length = "Content-Length: " + QByteArray::number(body.size());
    co_await send(head(status, contentType, length, headers) + body);
}

Work Exchange::respondJson(int status, QJsonObject body)
{
    co_await respond(status, "application/json", QJsonDocument(body).toJson(QJsonDocument::Compact));
}

Work Exchange::beginStream(int status, QByteArray contentType)
{
    co_await send(head(status, contentType, "Transfer-Encoding: chunked", {}));
}

Work Exchange::chunk(QByteArray bytes)
{
    if (!bytes.isEmpty()) // an empty chunk would end the body
        co_await send(QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n");
}

Work Exchange::endStream()
{
    co_await send("0\r\n\r\n");
}

} // namespace morvane
