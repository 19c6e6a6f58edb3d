#pragma once

#include <QStringList>

namespace morvane {

// What a good verdict leaves open, a line each. It stands in every report, so that "ok" isn't read as more.
namespace Limits {

[[nodiscard]] QStringList ofQuote();
[[nodiscard]] QStringList ofGPUs();
[[nodiscard]] QStringList ofReplay();
[[nodiscard]] QStringList ofDocument();

} // namespace Limits

} // namespace morvane
