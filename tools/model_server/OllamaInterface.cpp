#include "OllamaInterface.h"

#include "Dialect.h"
#include "OllamaObjects.h"
#include "Reply.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 layerSize = 1'000'000; // bytes

QString askedModel(const Request &request)
{
    return request.json["model"_L1].toString(request.json["name"_L1].toString()); // the former key
}

Work version(Exchange &exchange, ModelList &)
{
    QJsonObject body;
    body.insert(u"version"_s, u"0.34.0"_s);
    co_await exchange.respondJson(200, body);
}

Work tags(Exchange &exchange, ModelList &models)
{
    QJsonArray list;
    for (const ListedModel &model : models.models())
        list.append(OllamaObjects::tag(model));
    QJsonObject body;
    body.insert(u"models"_s, list);
    co_await exchange.respondJson(200, body);
}

Work show(Exchange &exchange, ModelList &models)
{
    const QString name = askedModel(exchange.request());
    if (name.isEmpty())
        co_await refuse(exchange, 400, u"model is required"_s);
    else if (const ListedModel *model = models.find(name))
        co_await exchange.respondJson(200, OllamaObjects::shown(*model));
    else
        co_await refuse(exchange, 404, u"model '%1' not found"_s.arg(name));
}

Work status(Exchange &exchange, QString words)
{
    QJsonObject line;
    line.insert(u"status"_s, words);
    co_await exchange.chunk(Dialect::line(exchange.request(), line));
}

Work progress(Exchange &exchange, QString digest, qint64 completed)
{
    QJsonObject line{{u"status"_s, u"pulling "_s + digest.first(12)},
                     {u"digest"_s, u"sha256:"_s + digest},
                     {u"total"_s, layerSize}};
    if (completed > 0) // the first line of a layer leaves it out
        line.insert(u"completed"_s, completed);
    co_await exchange.chunk(Dialect::line(exchange.request(), line));
}

Work fail(Exchange &exchange, QString message)
{
    co_await exchange.chunk(Dialect::line(exchange.request(), OllamaObjects::error(message)));
    co_await exchange.endStream();
}

// Why nothing is pulled; nothing for a name that is.
QString pullProblem(const QString &name)
{
    return name == "pull-lost-key"_L1  ? u"open id_ed25519: no such file or directory"_s
           : name == "pull-missing"_L1 ? u"pull model manifest: file does not exist"_s
                                       : QString();
}

// One answer when all is done, with the problem's own status.
Work pullQuietly(Exchange &exchange, ModelList &models)
{
    const QString name = askedModel(exchange.request());
    const QString problem = pullProblem(name);
    if (name == "pull-stall"_L1)
        co_await exchange.stall();
    if (name == "pull-cut"_L1) {
        exchange.cut();
        co_return;
    }
    if (!problem.isEmpty()) {
        co_await refuse(exchange, 500, problem);
        co_return;
    }
    models.add(name);
    QJsonObject body;
    body.insert(u"status"_s, u"success"_s);
    co_await exchange.respondJson(200, body);
}

Work pull(Exchange &exchange, ModelList &models)
{
    const QString name = askedModel(exchange.request());
    const QString problem = pullProblem(name);
    if (!exchange.request().wantsStream()) {
        co_await pullQuietly(exchange, models);
        co_return;
    }
    co_await exchange.beginStream(200, Dialect::streamType(exchange.request()));
    if (name != "pull-lost-key"_L1)
        co_await status(exchange, u"pulling manifest"_s);
    if (!problem.isEmpty()) {
        co_await fail(exchange, problem);
        co_return;
    }
    const QString digest = ListedModel{name, {}, {}, {}, {}}.digest();
    for (int quarter = 0; quarter < 3; ++quarter)
        co_await progress(exchange, digest, layerSize / 4 * quarter);
    if (name == "pull-stall"_L1)
        co_await exchange.stall();
    if (name == "pull-cut"_L1) {
        exchange.cut();
        co_return;
    }
    co_await progress(exchange, digest, layerSize);
    co_await status(exchange, u"verifying sha256 digest"_s);
    co_await status(exchange, u"writing manifest"_s);
    co_await status(exchange, u"success"_s);
    models.add(name);
    co_await exchange.endStream();
}

struct Route {
    QLatin1StringView method;
    QLatin1StringView path;
    Work (*answer)(Exchange &exchange, ModelList &models);
};

constexpr Route routes[]{
    {"GET"_L1, "/api/version"_L1, version},
    {"GET"_L1, "/api/tags"_L1, tags},
    {"POST"_L1, "/api/show"_L1, show},
    {"POST"_L1, "/api/pull"_L1, pull},
};

const Route *routeOf(const Request &request)
{
    for (const Route &route : routes) {
        if (request.method == route.method && request.path() == route.path)
            return &route;
    }
    return nullptr;
}

} // namespace

bool OllamaInterface::answers(const Request &request)
{
    return routeOf(request) != nullptr;
}

Work OllamaInterface::answer(Exchange &exchange, ModelList &models)
{
    co_await routeOf(exchange.request())->answer(exchange, models);
}

std::optional<QString> OllamaInterface::objection(const Request &request, const ModelList &models)
{
    const ListedModel *model = models.find(request.model());
    if (!model)
        return std::nullopt;
    if (request.offersTools() && !model->can(u"tools"_s))
        return u"\"%1\" does not support tools"_s.arg(model->name);
    if (request.asksForThinking() && !model->can(u"thinking"_s))
        return u"\"%1\" does not support thinking"_s.arg(model->name);
    return std::nullopt;
}

} // namespace morvane
