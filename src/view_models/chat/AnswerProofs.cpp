#include "view_models/chat/AnswerProofs.h"

#include "models/ChatMessage.h"

namespace morvane {

bool AnswerProofs::note(ChatMessage &answer, const QUuid &row)
{
    const std::optional<ProofLedger::Entry> entry = m_ledger.find(row);
    if (!entry)
        return false;
    answer.setPlaceRaw(entry->place.code());
    if (entry->attestation && entry->attestation != m_last) {
        m_rows[answer.id()] = row;
        m_last = entry->attestation;
    }
    return true;
}

} // namespace morvane
