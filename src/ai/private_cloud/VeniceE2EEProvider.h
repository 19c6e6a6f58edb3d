#pragma once

#include "ai/contract/AIProvider.h"
#include "attestation/ProofLedger.h"
#include "attestation/VeniceEnclaveSource.h"
#include "network/HttpSession.h"

#include <QPointer>

#include <chrono>

namespace morvane {

// Speaks to the private cloud, and never in plain text: each attempt of a turn gets a proof of the server, a
// key pair of its own, and messages sealed to the key that the proof vouches for. Whatever can't be done ends
// the turn with ProviderError. Leaves a row in the proof ledger for each sealed attempt and each refusal.
// GUI thread.
//
// A reply under way outlives the provider.
class VeniceE2EEProvider final : public AIProvider {
public:
    // The references outlive every reply. A proof that the server has no time for is asked for once more
    // after `proofRetryPause`.
    VeniceE2EEProvider(VeniceEnclaveSource &enclaves, HttpSessionProviding &network, ProofLedger &ledger,
                       Clock &clock, ProofWatch *watch = nullptr,
                       std::chrono::milliseconds proofRetryPause = std::chrono::seconds(2));

    [[nodiscard]] AsyncStream<AIStreamEvent> streamReply(std::vector<AIMessage> messages,
                                                         AIConfiguration configuration,
                                                         std::vector<AITool> tools) override;

private:
    VeniceEnclaveSource &m_enclaves;
    HttpSessionProviding &m_network;
    ProofLedger &m_ledger;
    Clock &m_clock;
    QPointer<ProofWatch> m_watch;
    std::chrono::milliseconds m_proofRetryPause;
};

} // namespace morvane
