#pragma once

#include "loopback/Exchange.h"
#include "loopback/RequestLog.h"
#include "loopback/WireRecord.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace morvane {

// What answers the requests that arrive.
class Service {
public:
    virtual ~Service() = default;
    virtual Work answer(Exchange &exchange) = 0;
};

// Listens, on loopback unless it is told otherwise, and hands each request to the service. One thread.
class Server {
public:
    // Port 0 is any free one. Throws a system_error when the port can't be had.
    Server(boost::asio::io_context &context, std::uint16_t port, Service &service, RequestLog &log,
           WireRecord &record);
    Server(boost::asio::io_context &context, const boost::asio::ip::tcp::endpoint &endpoint, Service &service,
           RequestLog &log, WireRecord &record);

    [[nodiscard]] std::uint16_t port() const { return m_acceptor.local_endpoint().port(); }

    // Says on standard output where it listens, and serves until a signal to end comes.
    void run();

    // Serves for as long as the context runs.
    void listen();

    // For the connections.
    [[nodiscard]] boost::asio::io_context &context() { return m_context; }
    [[nodiscard]] WireRecord &record() { return m_record; }
    [[nodiscard]] int newConnection() { return ++m_connections; }
    void arrived(Request &request);
    void ended(const Request &request, bool clientLeft);
    Work answer(Exchange &exchange) { return m_service.answer(exchange); }

private:
    Work accept();

    boost::asio::io_context &m_context;
    boost::asio::ip::tcp::acceptor m_acceptor;
    Service &m_service;
    RequestLog &m_log;
    WireRecord &m_record;
    int m_connections = 0;
};

} // namespace morvane
