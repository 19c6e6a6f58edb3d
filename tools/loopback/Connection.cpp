#include "loopback/Connection.h"

#include "loopback/Server.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <QJsonDocument>

namespace morvane {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::use_awaitable;

namespace {

using Parser = http::request_parser<http::string_body>;

// A picture or two as data URLs fits; a client that sends more is at fault.
constexpr std::uint64_t largestRequest = 64 * 1024 * 1024;

template <typename View>
QByteArray bytes(const View &view)
{
    return {view.data(), static_cast<qsizetype>(view.size())};
}

Request requestOf(const Parser::value_type &message)
{
    Request request;
    request.method = bytes(message.method_string());
    request.target = bytes(message.target());
    for (const auto &field : message)
        request.headers.emplace_back(bytes(field.name_string()), bytes(field.value()));
    request.body = bytes(message.body());
    request.json = QJsonDocument::fromJson(request.body).object();
    return request;
}

Work say(Exchange::Line &line, std::string_view words)
{
    line.record.sent(line.number, QByteArrayView(words.data(), static_cast<qsizetype>(words.size())));
    co_await asio::async_write(line.socket, asio::buffer(words.data(), words.size()), use_awaitable);
}

// Reads on into the buffer, behind what a parser has left there.
asio::awaitable<bool> readSome(Exchange::Line &line, boost::beast::flat_buffer &buffer)
{
    constexpr std::size_t portion = 64 * 1024;
    boost::system::error_code error;
    const auto room = buffer.prepare(portion);
    const std::size_t count =
        co_await line.socket.async_read_some(room, asio::redirect_error(use_awaitable, error));
    line.record.received(
        line.number, QByteArrayView(static_cast<const char *>(room.data()), static_cast<qsizetype>(count)));
    buffer.commit(count);
    co_return !error;
}

asio::awaitable<bool> readMessage(Exchange::Line &line, boost::beast::flat_buffer &buffer, Parser &parser)
{
    boost::system::error_code error;
    bool wasAsked = false;
    while (true) {
        if (buffer.size() > 0)
            buffer.consume(parser.put(buffer.data(), error));
        if (error == http::error::body_limit || error == http::error::header_limit)
            co_await say(line,
                         "HTTP/1.1 413 Payload Too Large\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        if ((error && error != http::error::need_more) || parser.is_done())
            break;
        if (!wasAsked && parser.is_header_done() && parser.get()[http::field::expect] == "100-continue") {
            wasAsked = true;
            co_await say(line, "HTTP/1.1 100 Continue\r\n\r\n");
        }
        const bool isOpen = co_await readSome(line, buffer);
        if (!isOpen)
            break;
        error = {};
    }
    co_return parser.is_done();
}

} // namespace

Connection::Connection(asio::ip::tcp::socket socket, Server &server)
    : m_line{std::move(socket), asio::steady_timer(server.context()), server.record(), server.newConnection()}
    , m_server(server)
{}

Work Connection::serve(std::shared_ptr<Connection> self)
{
    try {
        asio::ip::tcp::socket &socket = self->m_line.socket;
        socket.set_option(asio::ip::tcp::no_delay(true));
        boost::beast::flat_buffer buffer;
        bool goesOn = true;
        while (goesOn) {
            Parser parser;
            parser.body_limit(largestRequest);
            parser.eager(true);
            const bool isWhole = co_await readMessage(self->m_line, buffer, parser);
            if (!isWhole)
                break;
            goesOn = co_await self->answer(requestOf(parser.get()));
            goesOn = goesOn && parser.get().keep_alive();
        }
        boost::system::error_code ignored;
        socket.shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    } catch (const boost::system::system_error &) {
        // The client went away while something was written to it.
    }
}

asio::awaitable<bool> Connection::answer(Request request)
{
    m_server.arrived(request);
    asio::co_spawn(m_server.context(), watch(shared_from_this()), asio::detached);
    Exchange exchange(m_line, request);
    bool clientLeft = false;
    try {
        co_await m_server.answer(exchange);
    } catch (const ClientLeft &) {
        clientLeft = true;
    } catch (const boost::system::system_error &) {
        clientLeft = true;
    }
    m_server.ended(request, clientLeft);
    boost::system::error_code ignored;
    m_line.socket.cancel(ignored); // the watch ends with the answer
    co_return exchange.keepsConnection() && !clientLeft;
}

Work Connection::watch(std::shared_ptr<Connection> self)
{
    boost::system::error_code error;
    co_await self->m_line.socket.async_wait(asio::ip::tcp::socket::wait_read,
                                            asio::redirect_error(use_awaitable, error));
    if (error == asio::error::operation_aborted)
        co_return;
    self->m_line.clientLeft = error || self->m_line.socket.available(error) == 0;
    if (self->m_line.clientLeft)
        self->m_line.timer.cancel();
}

} // namespace morvane
