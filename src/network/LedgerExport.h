#pragma once

#include "network/NetworkLedger.h"

#include <QByteArray>

namespace morvane {

// The network ledger as a table for a spreadsheet. Pure.
namespace LedgerExport {

// A name for the file, after the date and minute in `moment`'s own time zone; pass local time.
[[nodiscard]] QString fileName(const QDateTime &moment);

// Comma-separated UTF-8 with a header row, every field quoted, oldest row first. Times are UTC, ISO 8601.
[[nodiscard]] QByteArray csv(const std::vector<NetworkLedger::Entry> &entries);

// The labels of private data in the order of the alphabet, "none" for none.
[[nodiscard]] QString carriedLabels(SensitiveDataSet carrying);

} // namespace LedgerExport

} // namespace morvane
