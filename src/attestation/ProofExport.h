#pragma once

#include "attestation/ProofLedger.h"

#include <QByteArray>

#include <vector>

namespace morvane {

// The proof ledger as one JSON object that anybody can check: the rows, the hardware's own quotes, and words
// about what they show and how to check them. Pure; ProofExportFile reads it back.
namespace ProofExport {

// UTF-8, oldest row first, dates in UTC to the second. `guidePage` is the address of the maker's page about
// checking a proof by hand, empty where there is none.
[[nodiscard]] QByteArray json(const std::vector<ProofLedger::Entry> &entries, const QDateTime &exported,
                              const QString &guidePage);

} // namespace ProofExport

} // namespace morvane
