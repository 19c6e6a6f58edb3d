#pragma once

#include "ai/routing/ChatSource.h"
#include "ai/routing/PrivacyClass.h"
#include "attestation/ProofLedger.h"

#include <optional>

namespace morvane {

// A place for turns, with what is known of it. What a window says of the place and what the proof ledger
// keeps are read off this one value, so that they never tell different stories.
struct JudgedPlace {
    ChatSource source;
    PrivacyClass privacy;

    bool operator==(const JudgedPlace &) const = default;

    [[nodiscard]] static JudgedPlace privateCloud();

    // A server nearby that passes a model's questions on to a service counts as that service, however near
    // its address is. `privacy` is nothing for a place that nobody has looked at yet.
    [[nodiscard]] static JudgedPlace of(const QString &baseURL, const QString &model,
                                        const std::optional<PrivacyClass> &privacy);

    // As the proof ledger keeps it; `model` is the one that answers.
    [[nodiscard]] ProofLedger::Place inLedger(const QString &model) const;
};

} // namespace morvane
