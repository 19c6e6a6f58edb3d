#pragma once

#include "loopback/Request.h"

namespace morvane {

// The search endpoint of the product, played: "GET /v1/search?q=…". A query with the word "nothing" finds
// nothing; any other finds three pages of hosts that don't exist.
namespace SearchAnswers {

[[nodiscard]] bool answers(const Request &request);

[[nodiscard]] QJsonObject answer(const Request &request);

} // namespace SearchAnswers

} // namespace morvane
