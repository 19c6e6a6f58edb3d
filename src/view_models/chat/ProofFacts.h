#pragma once

#include "attestation/ProofLedger.h"

#include <QStringList>
#include <QVariantList>

namespace morvane {

// A row of the proof ledger in full, for a person who checks it. Says no more than was checked.
namespace ProofFacts {

// Each { label, value, explanation, bytes }: what it is, how it is shown, one plain sentence, and what is
// copied of it, lower-case hexadecimal; empty where there is nothing to copy.
[[nodiscard]] QVariantList of(const ProofLedger::Entry &row);

// What the row doesn't show, a sentence each.
[[nodiscard]] QStringList limits(const ProofLedger::Entry &row);

} // namespace ProofFacts

} // namespace morvane
