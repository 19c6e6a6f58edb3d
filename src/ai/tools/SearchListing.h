#pragma once

#include "services/WebAccessing.h"

namespace morvane {

// Search results as the model reads them.
namespace SearchListing {

enum class Images { shown, leftOut };

// One numbered entry for each result, unwrapped.
[[nodiscard]] QString of(const std::vector<WebAccessing::SearchResult> &results, Images images);

} // namespace SearchListing

} // namespace morvane
