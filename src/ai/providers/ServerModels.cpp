#include "ai/providers/ServerModels.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/ModelRequest.h"
#include "ai/providers/ProviderFailure.h"
#include "async/Work.h"
#include "utils/text/Json.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using ListFailure = ModelListError::Plain;

namespace {

constexpr qsizetype longestName = 200;

HttpRequest requestFor(const AIConfiguration &configuration)
{
    HttpRequest request =
        ModelRequest::to(BaseURL::models(configuration.baseURLString), configuration.apiKey);
    request.headers.push_back({"Accept", "application/json"});
    request.timeout = 20s;
    request.limit = request.timeout;
    return request;
}

// Most services send the list under "data", some under "models", the others bare.
std::optional<QJsonArray> listIn(QByteArrayView body)
{
    const auto document = QJsonDocument::fromJson(QByteArray::fromRawData(body.data(), body.size()));
    if (document.isArray())
        return document.array();
    const auto data = Json::array(document.object(), "data"_L1);
    return data ? data : Json::array(document.object(), "models"_L1);
}

QString nameIn(const QJsonValue &model)
{
    return model.toString(model["id"_L1].toString(model["name"_L1].toString()));
}

QString wordsOf(const ModelListError::Refused &refused)
{
    return u"The server gave no list of its models (HTTP %1)."_s.arg(refused.statusCode);
}

QString wordsOf(ListFailure failure)
{
    switch (failure) {
    case ListFailure::tooLarge:
        return u"The server's list of models is too large to read."_s;
    case ListFailure::unreadable:
        return u"The server's answer is no list of models."_s;
    }
    return {};
}

bool isAboutTheKeyOrTheRate(int status)
{
    return status == 401 || status == 403 || status == 429;
}

} // namespace

QString ModelListError::userMessage() const
{
    return std::visit([](const auto &failure) { return wordsOf(failure); }, reason());
}

std::optional<QStringList> ServerModels::parse(QByteArrayView body)
{
    const auto models = listIn(body);
    if (!models)
        return std::nullopt;
    QStringList names;
    for (const auto &model : *models) {
        const QString name = nameIn(model);
        if (!name.isEmpty() && name.size() <= longestName)
            names += name;
        if (names.size() == mostNames)
            break;
    }
    names.sort(Qt::CaseInsensitive);
    names.removeDuplicates();
    return names;
}

QCoro::Task<QStringList> ServerModels::list(HttpSessionProviding *network, Work *work,
                                            AIConfiguration configuration, std::stop_token stop)
{
    try {
        HttpRequest request = requestFor(configuration);
        const auto session = network->session(EgressFeature::aiModel, {});
        auto response = co_await session->send(std::move(request), stop);
        const int status = response.status;
        if (!ProviderFailure::isSuccess(status)) {
            co_await discardBody(std::move(response), stop);
            if (isAboutTheKeyOrTheRate(status))
                throw ProviderError::forStatus(status);
            throw ModelListError(ModelListError::Refused{status});
        }
        const QByteArray body = co_await readBody(std::move(response), largestBody, stop);
        std::function<std::optional<QStringList>()> reading = [body] { return parse(body); };
        std::optional<QStringList> names = co_await work->run(std::move(reading), stop);
        if (!names)
            throw ModelListError(ListFailure::unreadable);
        co_return std::move(*names);
    } catch (const ModelListError &) {
        throw;
    } catch (const TransportError &error) {
        if (error.code() == TransportError::Code::ResponseTooLarge)
            throw ModelListError(ListFailure::tooLarge);
        throw ProviderFailure::mapped(std::current_exception());
    } catch (...) {
        throw ProviderFailure::mapped(std::current_exception());
    }
}

} // namespace morvane
