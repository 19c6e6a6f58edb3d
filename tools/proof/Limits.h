#pragma once

#include <QStringList>

namespace morvane {

// What a good verdict leaves open, a line each. It stands in every report, so that "ok" isn't read as more.
namespace Limits {

[[nodiscard]] QStringList ofQuote();
[[nodiscard]] QStringList ofGPUs();
[[nodiscard]] QStringList ofReplay();
[[nodiscard]] QStringList ofDocument();

// Of a row in an exported proof ledger, beside what is said of the fields it holds.
[[nodiscard]] QStringList ofExport();

} // namespace Limits

} // namespace morvane
