#pragma once

#include "Options.h"
#include "Report.h"

namespace morvane {

// The rows of an exported proof ledger, each with a report of its own.
namespace ExportedRows {

// Adds them to the file's report, and its verdict: "ok" when no row fails, at least one holds a proof,
// and the rows are not others than those that the file says it was exported with.
// Throws UsageError for a file that can't be read or holds no proof.
void check(const Options &options, Report &file);

} // namespace ExportedRows

} // namespace morvane
