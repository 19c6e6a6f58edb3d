#pragma once

#include "attestation/ProofRun.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"

#include <QCoroTask>

#include <stop_token>

namespace morvane {

// Where proofs of the private cloud's servers come from. GUI thread.
class VeniceEnclaveSource {
public:
    virtual ~VeniceEnclaveSource() = default;

    // A proof that holds now, perhaps one of before; `run` is told how it comes about. Throws what stood in
    // the way: VeniceAttestationVerifier::Failure when the proof doesn't hold, CancelledError.
    [[nodiscard]] virtual QCoro::Task<VeniceAttestationVerifier::Verified>
    verifiedEnclave(QString model, ProofRun run, std::stop_token stop) = 0;

    // The next proof for the model is a new one.
    virtual void forget(const QString &model) = 0;

    // Which list of accepted servers is judged by now: one sentence for a row of the proof ledger.
    [[nodiscard]] virtual QString acceptedListText() const = 0;
};

} // namespace morvane
