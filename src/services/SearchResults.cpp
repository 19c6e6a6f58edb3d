#include "services/SearchResults.h"

#include "services/PageText.h"
#include "utils/text/Json.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> secureThumbnail(const QJsonObject &entry)
{
    const auto thumbnail = Json::object(entry, "thumbnail"_L1);
    auto source = thumbnail ? Json::string(*thumbnail, "src"_L1) : std::nullopt;
    return source && source->startsWith("https://"_L1) ? std::move(source) : std::nullopt;
}

} // namespace

std::vector<WebAccessing::SearchResult> SearchResults::read(const QJsonArray &results,
                                                            QLatin1StringView snippetKey)
{
    std::vector<WebAccessing::SearchResult> read;
    for (const QJsonValue &value : results) {
        const QJsonObject entry = value.toObject(); // empty for any other value
        const auto title = Json::string(entry, "title"_L1);
        const auto url = Json::string(entry, "url"_L1);
        if (!title || !url)
            continue;
        read.push_back({.title = PageText::withoutTags(*title),
                        .url = *url,
                        .snippet = PageText::withoutTags(Json::string(entry, snippetKey).value_or(QString())),
                        .thumbnailURL = secureThumbnail(entry)});
    }
    return read;
}

} // namespace morvane
