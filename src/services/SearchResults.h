#pragma once

#include "services/WebAccessing.h"

#include <QJsonArray>

namespace morvane {

// What search services answer with. Pure.
namespace SearchResults {

// Entries without a title and an address are skipped. Titles and snippets come without tags.
[[nodiscard]] std::vector<WebAccessing::SearchResult> read(const QJsonArray &results,
                                                           QLatin1StringView snippetKey);

} // namespace SearchResults

} // namespace morvane
