#include "Connection.h"

#include "Server.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
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

asio::awaitable<bool> readMessage(asio::ip::tcp::socket &socket, boost::beast::flat_buffer &buffer,
                                  Parser &parser)
{
    boost::system::error_code error;
    co_await http::async_read_header(socket, buffer, parser, asio::redirect_error(use_awaitable, error));
    if (!error && parser.get()[http::field::expect] == "100-continue") {
        const std::string_view goOn = "HTTP/1.1 100 Continue\r\n\r\n";
        co_await asio::async_write(socket, asio::buffer(goOn), use_awaitable);
    }
    if (!error)
        co_await http::async_read(socket, buffer, parser, asio::redirect_error(use_awaitable, error));
    if (error == http::error::body_limit || error == http::error::header_limit) {
        const std::string_view refusal = "HTTP/1.1 413 Payload Too Large\r\nContent-Length: 0\r\n"
                                         "Connection: close\r\n\r\n";
        co_await asio::async_write(socket, asio::buffer(refusal), use_awaitable);
    }
    co_return !error;
}

} // namespace

Connection::Connection(asio::ip::tcp::socket socket, Server &server)
    : m_line{std::move(socket), asio::steady_timer(server.context())}
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
            const bool isWhole = co_await readMessage(socket, buffer, parser);
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
        co_await m_server.route(exchange);
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
