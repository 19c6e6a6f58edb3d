#pragma once

#include "ai/contract/ProviderError.h"

#include <QJsonObject>

namespace morvane {

// What a server says about an error, and what that tells.
namespace ServerWords {

// One line without control or formatting characters, at most 300 characters and "…". Empty when the object
// has none. Services put them into "error", "message" or "detail", as a text, an object or a list; some send
// the object in a list, and some no JSON but the words.
[[nodiscard]] QString of(const QJsonObject &answer);
[[nodiscard]] QString of(QByteArrayView body);

// The error for a refused request: by its status, or for what the words name. A status of 0 is that of an
// error which came in the place of a reply and gives none.
[[nodiscard]] ProviderError error(int status, const QString &words);

} // namespace ServerWords

} // namespace morvane
