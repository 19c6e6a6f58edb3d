#include "ai/providers/ServerModels.h"

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/ProviderFailure.h"
#include "ai/providers/ReplyLines.h"
#include "utils/text/Json.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qsizetype longestName = 200;

HttpRequest requestFor(const AIConfiguration &configuration)
{
    QUrl url = BaseURL::validated(configuration.baseURLString);
    QString path = url.path();
    while (path.endsWith(u'/'))
        path.chop(1);
    url.setPath(path + u"/models"_s);
    HttpRequest request{.url = url, .headers = {{"Accept", "application/json"}}, .timeout = 20s};
    if (configuration.apiKey && !configuration.apiKey->isEmpty())
        request.headers.push_back({"Authorization", "Bearer " + configuration.apiKey->toUtf8()});
    return request;
}

} // namespace

std::optional<QStringList> ServerModels::parse(QByteArrayView body)
{
    const auto answer = Json::parseObject(body);
    const auto models = answer ? Json::array(*answer, "data"_L1) : std::nullopt;
    if (!models)
        return std::nullopt;
    QStringList names;
    for (const auto &model : *models) {
        const auto name = Json::string(model.toObject(), "id"_L1);
        if (name && !name->isEmpty() && name->size() <= longestName)
            names += *name;
        if (names.size() == mostNames)
            break;
    }
    names.sort(Qt::CaseInsensitive);
    names.removeDuplicates();
    return names;
}

QCoro::Task<QStringList> ServerModels::list(HttpSessionProviding *network, AIConfiguration configuration,
                                            std::stop_token stop)
{
    try {
        HttpRequest request = requestFor(configuration);
        const auto session = network->session(EgressFeature::aiModel, {});
        auto response = co_await session->send(std::move(request), stop);
        auto answer = co_await ProviderFailure::validated(std::move(response), stop);
        const QByteArray body = co_await readBody(std::move(answer), ReplyLines::longest, stop);
        std::optional<QStringList> names = parse(body);
        if (!names)
            throw ProviderError(ProviderError::Plain::malformedResponse);
        co_return std::move(*names);
    } catch (...) {
        throw ProviderFailure::mapped(std::current_exception());
    }
}

} // namespace morvane
