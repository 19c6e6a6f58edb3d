#pragma once

#include "Exchange.h"
#include "ModelList.h"
#include "RequestLog.h"
#include "ScriptedReplies.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace morvane {

// Speaks the chat-completions dialect on loopback, and Ollama's own interface when it is told to. One thread.
class Server {
public:
    struct Settings {
        std::uint16_t port = 0; // 0: any free one
        QByteArray requiredKey; // empty: none
        bool speaksOllama = false;
        QString manner;   // that of Scenarios::refusal()
        ModelList models; // what is listed at first
    };

    // Throws a system_error when the port can't be had.
    Server(boost::asio::io_context &context, Settings settings, RequestLog &log, ScriptedReplies &scripted);

    [[nodiscard]] std::uint16_t port() const { return m_acceptor.local_endpoint().port(); }
    void start();

    // For the connections.
    [[nodiscard]] boost::asio::io_context &context() { return m_context; }
    void arrived(Request &request);
    void ended(const Request &request, bool clientLeft);
    Work route(Exchange &exchange);

private:
    Work accept();
    Work chat(Exchange &exchange);
    [[nodiscard]] QJsonObject modelList() const;
    [[nodiscard]] bool isAllowed(const Request &request) const;

    boost::asio::io_context &m_context;
    boost::asio::ip::tcp::acceptor m_acceptor;
    Settings m_settings;
    RequestLog &m_log;
    ScriptedReplies &m_scripted;
    int m_requests = 0;
};

} // namespace morvane
