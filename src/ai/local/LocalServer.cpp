#include "ai/local/LocalServer.h"

#include "ai/local/LocalSetupError.h"
#include "ai/providers/OllamaProbe.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ServerWords.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A server on this machine has nobody to send us on to.
bool staysHere(const QUrl & /*from*/, const QUrl & /*to*/)
{
    return false;
}

QCoro::Task<OllamaProbe::Answer> asked(LocalServer server, QString path, std::stop_token stop)
{
    HttpRequest request = server.request(path);
    request.timeout = LocalServer::probeTimeout;
    request.limit = LocalServer::probeTimeout;
    const OllamaProbe probe{server.session(), std::move(request)};
    co_return co_await OllamaProbe::answer(probe, std::move(stop));
}

} // namespace

std::shared_ptr<HttpSession> LocalServer::session() const
{
    return network->session(EgressFeature::aiSetup, {});
}

HttpRequest LocalServer::request(const QString &path, const std::optional<QJsonObject> &body) const
{
    HttpRequest request;
    request.url = origin;
    request.url.setPath(path);
    request.followsRedirect = staysHere;
    if (body) {
        request.method = "POST";
        request.headers.push_back({"Content-Type", "application/json"});
        request.body = QJsonDocument(*body).toJson(QJsonDocument::Compact);
    }
    return request;
}

QCoro::Task<std::optional<std::vector<ServerModel>>> LocalServer::models(LocalServer server,
                                                                         std::stop_token stop)
{
    const OllamaProbe::Answer answer = co_await asked(std::move(server), u"/api/tags"_s, std::move(stop));
    if (!answer.object || !Json::array(*answer.object, "models"_L1))
        co_return std::nullopt;
    co_return ServerModel::listed(*answer.object);
}

QCoro::Task<std::optional<std::uint64_t>> LocalServer::memoryInUse(LocalServer server, std::stop_token stop)
{
    const OllamaProbe::Answer answer = co_await asked(std::move(server), u"/api/ps"_s, std::move(stop));
    const auto loaded = answer.object ? Json::objects(*answer.object, "models"_L1) : std::nullopt;
    if (!loaded)
        co_return std::nullopt;
    std::uint64_t bytes = 0;
    for (const QJsonObject &model : *loaded)
        bytes += static_cast<std::uint64_t>(
            std::max<std::int64_t>(0, Json::integer(model, "size"_L1).value_or(0)));
    co_return bytes;
}

QCoro::Task<> LocalServer::remove(LocalServer server, QString model, std::stop_token stop)
{
    const QJsonObject body{{u"model"_s, model}};
    HttpRequest request = server.request(u"/api/delete"_s, body);
    request.method = "DELETE";
    request.timeout = 30s;
    const auto session = server.session();
    QString reason;
    try {
        auto response = co_await session->send(std::move(request), stop);
        const int status = response.status;
        const QByteArray words =
            co_await ProviderFailure::readStart(std::move(response), ProviderFailure::errorBodyLimit, stop);
        if (ProviderFailure::isSuccess(status))
            co_return;
        reason = ServerWords::of(words);
        if (reason.isEmpty())
            reason = u"HTTP %1"_s.arg(status);
    } catch (const TransportError &error) {
        reason = error.description();
    }
    throwIfStopped(stop);
    throw LocalSetupError(u"Couldn't delete the model %1: %2"_s.arg(model, reason));
}

} // namespace morvane
