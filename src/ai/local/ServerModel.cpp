#include "ai/local/ServerModel.h"

#include "utils/text/Json.h"

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t mostModels = 10'000;
constexpr qsizetype longestName = 400;

} // namespace

std::vector<ServerModel> ServerModel::listed(const QJsonObject &answer)
{
    std::vector<ServerModel> models;
    const QJsonArray entries = Json::array(answer, "models"_L1).value_or(QJsonArray());
    for (const auto &entry : entries) {
        const QJsonObject object = entry.toObject();
        const auto called = Json::string(object, "model"_L1);
        const QString name = called ? *called : Json::string(object, "name"_L1).value_or(QString());
        if (name.isEmpty() || name.size() > longestName || models.size() == mostModels)
            continue;
        models.push_back(
            {name, Json::string(object, "digest"_L1).value_or(QString()), Json::integer(object, "size"_L1)});
    }
    std::sort(models.begin(), models.end(), [](const ServerModel &a, const ServerModel &b) {
        return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
    });
    return models;
}

} // namespace morvane
