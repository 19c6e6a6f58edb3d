#pragma once

#include "attestation/ProofLedger.h"

#include <map>

namespace morvane {

class ChatMessage;

// Ties answers to their rows in the proof ledger. GUI thread.
class AnswerProofs {
public:
    // `ledger` outlives this object.
    explicit AnswerProofs(const ProofLedger &ledger)
        : m_ledger(ledger)
    {}

    // Stores the row's place with the answer. False when there is no such row, and nothing is changed.
    bool note(ChatMessage &answer, const QUuid &row);

    // The row of each answer whose hardware proof differs from that of the answer before it, by message id.
    [[nodiscard]] const std::map<QUuid, QUuid> &rows() const { return m_rows; }

private:
    const ProofLedger &m_ledger;
    std::map<QUuid, QUuid> m_rows;
    std::optional<ProofLedger::Attestation> m_last;
};

} // namespace morvane
