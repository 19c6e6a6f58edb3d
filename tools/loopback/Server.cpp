#include "loopback/Server.h"

#include "loopback/Connection.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <cstdio>

namespace morvane {

namespace asio = boost::asio;

Server::Server(asio::io_context &context, std::uint16_t port, Service &service, RequestLog &log,
               WireRecord &record)
    : Server(context, {asio::ip::address_v4::loopback(), port}, service, log, record)
{}

Server::Server(asio::io_context &context, const asio::ip::tcp::endpoint &endpoint, Service &service,
               RequestLog &log, WireRecord &record)
    : m_context(context)
    , m_acceptor(context, endpoint)
    , m_service(service)
    , m_log(log)
    , m_record(record)
{}

void Server::run()
{
    asio::signal_set signals(m_context, SIGINT, SIGTERM);
    signals.async_wait([this](const boost::system::error_code &, int) { m_context.stop(); });
    listen();
    std::printf("listening on http://127.0.0.1:%u/v1\n", static_cast<unsigned>(port()));
    std::fflush(stdout);
    m_context.run();
}

void Server::listen()
{
    asio::co_spawn(m_context, accept(), asio::detached);
}

Work Server::accept()
{
    while (true) {
        boost::system::error_code error;
        auto socket = co_await m_acceptor.async_accept(asio::redirect_error(asio::use_awaitable, error));
        if (error)
            continue; // a client that left before it was served
        auto connection = std::make_shared<Connection>(std::move(socket), *this);
        asio::co_spawn(m_context, Connection::serve(connection), asio::detached);
    }
}

void Server::arrived(Request &request)
{
    m_log.arrived(request);
}

void Server::ended(const Request &request, bool clientLeft)
{
    m_log.ended(request, clientLeft);
}

} // namespace morvane
