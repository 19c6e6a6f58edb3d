#include "Server.h"

#include "ChatCompletion.h"
#include "Connection.h"
#include "Scenarios.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <QJsonArray>

namespace asio = boost::asio;
using namespace Qt::StringLiterals;

namespace {

// Names with a number get the one that people try first.
QJsonObject modelList()
{
    QJsonArray models;
    for (const auto scenarios : {Scenarios::replies(), Scenarios::broken()}) {
        for (const Scenario &scenario : scenarios) {
            QString id = scenario.name;
            if (id == "pieces-N"_L1)
                id = u"pieces-2000"_s;
            if (id == "status-N"_L1)
                id = u"status-500"_s;
            models.append(QJsonObject{
                {u"id"_s, id}, {u"object"_s, u"model"_s}, {u"created"_s, 0}, {u"owned_by"_s, u"practice"_s}});
        }
    }
    return {{u"object"_s, u"list"_s}, {u"data"_s, models}};
}

} // namespace

Server::Server(asio::io_context &context, Settings settings, RequestLog &log, ScriptedReplies &scripted)
    : m_context(context)
    , m_acceptor(context, {asio::ip::address_v4::loopback(), settings.port})
    , m_settings(std::move(settings))
    , m_log(log)
    , m_scripted(scripted)
{}

void Server::start()
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
    request.number = ++m_requests;
    m_log.arrived(request);
}

void Server::ended(const Request &request, bool clientLeft)
{
    m_log.ended(request, clientLeft);
}

bool Server::isAllowed(const Request &request) const
{
    return m_settings.requiredKey.isEmpty() ||
           request.header("Authorization") == "Bearer " + m_settings.requiredKey;
}

Work Server::route(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QByteArray path = request.path();
    if (!isAllowed(request))
        co_await exchange.respondJson(401, ChatCompletion::error(u"Incorrect API key provided."_s, 401));
    else if (request.method == "GET" && path == "/v1/models")
        co_await exchange.respondJson(200, modelList());
    else if (request.method == "POST" && path == "/v1/chat/completions")
        co_await complete(exchange);
    else if (request.method == "POST" && path == "/elsewhere/v1/chat/completions")
        co_await Scenarios::find(u"practice-fast"_s)->play(exchange);
    else
        co_await exchange.respondJson(404,
                                      ChatCompletion::error(u"There is nothing at this address."_s, 404));
}

Work Server::complete(Exchange &exchange)
{
    const QString model = exchange.request().model();
    if (const auto answer = m_scripted.take(model)) {
        co_await ScriptedReplies::play(exchange, *answer);
    } else if (const Scenario *scenario = Scenarios::find(model)) {
        co_await scenario->play(exchange);
    } else {
        const QString message = u"The model “%1” does not exist here."_s.arg(model);
        co_await exchange.respondJson(404, ChatCompletion::error(message, 404));
    }
}
