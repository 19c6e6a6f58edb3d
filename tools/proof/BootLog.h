#pragma once

#include "attestation/evidence/VeniceBootEvent.h"

namespace morvane {

// A server's boot events, as a list of accepted servers holds them or as a server logged them: then each
// names its register, other registers than the third are left out, and the two live events hold the values of
// that start.
struct BootLog {
    std::vector<VeniceBootEvent> events; // the live ones without a payload
    std::optional<QByteArray> composeHash;
    std::optional<QByteArray> instanceID;

    // Throws UsageError for JSON of another form; `path` is for its words.
    [[nodiscard]] static BootLog read(const QByteArray &json, const QString &path);
};

} // namespace morvane
