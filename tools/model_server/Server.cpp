#include "Server.h"

#include "Connection.h"
#include "OllamaInterface.h"
#include "Reply.h"
#include "Scenarios.h"
#include "SearchAnswers.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <QJsonArray>

namespace morvane {

namespace asio = boost::asio;
using namespace Qt::StringLiterals;

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
    const bool isKnown = !request.isOllama() || m_settings.speaksOllama;
    if (!isAllowed(request))
        co_await refuse(exchange, 401, u"Incorrect API key provided."_s);
    else if (request.method == "GET" && path == "/v1/models")
        co_await exchange.respondJson(200, modelList());
    else if (SearchAnswers::answers(request))
        co_await exchange.respondJson(200, SearchAnswers::answer(request));
    else if (request.method == "POST" && (path == "/v1/chat/completions" || (isKnown && path == "/api/chat")))
        co_await chat(exchange);
    else if (isKnown && OllamaInterface::answers(request))
        co_await OllamaInterface::answer(exchange, m_settings.models);
    else if (request.method == "POST" && path.startsWith("/elsewhere/"))
        co_await Scenarios::find(u"practice-fast"_s)->play(exchange);
    else
        co_await refuse(exchange, 404, u"There is nothing at this address."_s);
}

Work Server::chat(Exchange &exchange)
{
    const Request &request = exchange.request();
    const QString name = request.model();
    const auto objection = request.isOllama() ? OllamaInterface::objection(request, m_settings.models)
                                              : std::optional<QString>();
    const auto refusal = Scenarios::refusal(m_settings.manner, request);
    if (const auto answer = m_scripted.take(name))
        co_await ScriptedReplies::play(exchange, *answer);
    else if (refusal)
        co_await exchange.respondJson(refusal->status, refusal->body);
    else if (objection)
        co_await refuse(exchange, 400, *objection);
    else if (const Scenario *scenario = Scenarios::find(m_settings.models.scenarioFor(name)))
        co_await scenario->play(exchange);
    else
        co_await refuse(exchange, 404, u"model '%1' not found"_s.arg(name));
}

QJsonObject Server::modelList() const
{
    QJsonArray models;
    for (const ListedModel &model : m_settings.models.models()) {
        models.append(QJsonObject{{u"id"_s, model.name},
                                  {u"object"_s, u"model"_s},
                                  {u"created"_s, 0},
                                  {u"owned_by"_s, u"practice"_s}});
    }
    return {{u"object"_s, u"list"_s}, {u"data"_s, models}};
}

} // namespace morvane
