#pragma once

#include "Attestation.h"
#include "SealedTurn.h"

#include <span>

namespace morvane {

// How the server proves itself and replies, chosen by the model that a request names.
struct CloudScenario {
    QLatin1StringView model;
    QLatin1StringView summary;
    Work (*prove)(Attestation &attestation); // null: well
    Work (*reply)(SealedTurn &turn);         // null: the practice reply
};

namespace CloudScenarios {

// Servers that prove themselves badly, late or not at all; asked nonetheless, they reply.
[[nodiscard]] std::span<const CloudScenario> proofs();

// Servers that prove themselves well, and what comes then.
[[nodiscard]] std::span<const CloudScenario> replies();

[[nodiscard]] std::vector<CloudScenario> all();

// Nothing for a name that no scenario has.
[[nodiscard]] std::optional<CloudScenario> find(const QString &model);

// The reply that shows that the right words were opened: it quotes what the person said last.
[[nodiscard]] QString practiceText(const SealedTurn &turn);

// An error as the service writes it.
Work refuse(Exchange &exchange, int status, QString message);

} // namespace CloudScenarios

} // namespace morvane
