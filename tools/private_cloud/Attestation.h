#pragma once

#include "CloudState.h"

#include "evidence/TestAuthority.h"
#include "loopback/Exchange.h"

namespace morvane {

// A request for a proof, and the answer to it.
struct Attestation {
    Exchange &exchange;
    CloudState &state;
    QString model;
    QByteArray nonce; // the client's, 32 bytes

    // Nothing when the request asks as it should; else what is wrong with it.
    [[nodiscard]] static std::optional<QString> objection(const Request &request);

    // A server that proves itself well for this request, to be bent by a scenario.
    [[nodiscard]] Scenario server() const;

    Work send(const Scenario &server) const;
    Work prove() const; // well
};

} // namespace morvane
