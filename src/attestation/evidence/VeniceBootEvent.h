#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace morvane {

// One thing a server measured into register 3 while it started.
struct VeniceBootEvent {
    QString name;
    std::optional<QString> payload; // hexadecimal; absent for the two events that the live server fills in

    // The register after `events` in a row, 48 bytes. `composeHash` (32 bytes) and `instanceID` (20 bytes)
    // are the payloads of "compose-hash" and "instance-id", which must occur once each. Nothing for events
    // that can't be replayed.
    [[nodiscard]] static std::optional<QByteArray> replay(const std::vector<VeniceBootEvent> &events,
                                                          const QByteArray &composeHash,
                                                          const QByteArray &instanceID);

    bool operator==(const VeniceBootEvent &) const = default;
};

} // namespace morvane
