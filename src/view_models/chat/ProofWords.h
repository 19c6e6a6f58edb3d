#pragma once

#include "attestation/ProofLedger.h"
#include "attestation/ProofWatch.h"

#include <QString>
#include <QVariantList>

namespace morvane {

// A proof in a few words: what came of it, why it was refused, how far one is that runs.
namespace ProofWords {

[[nodiscard]] bool isRefused(const ProofLedger::Entry &row);

// "Private cloud · Hardware verified", "This computer", …
[[nodiscard]] QString result(const ProofLedger::Entry &row);

// What came of one request, as the list of rows says it.
[[nodiscard]] QString outcome(const ProofLedger::Entry &row);

// Why nothing was sent, as one sentence. Not where the reply then came from, of which the row knows nothing.
[[nodiscard]] QString reason(const ProofLedger::Entry &refused);
[[nodiscard]] QString refusal(const ProofLedger::Entry &refused);
// Of an answer that came from the place of `row` after the private cloud, whose row was `before`.
[[nodiscard]] QString fallback(const ProofLedger::Entry &row, const ProofLedger::Entry &before);

// The step that a proof is at.
[[nodiscard]] QString underWay(const ProofWatch::Run &run);

// Its steps in order, each { name, question, state, words }: what it looks at, as a question, how it stands
// ("waiting", "running", "passed", "notChecked", "ended"), and that in words.
[[nodiscard]] QVariantList steps(const ProofWatch::Run &run);

} // namespace ProofWords

} // namespace morvane
