#pragma once

#include <QString>

#include <optional>

namespace morvane {

// A stand-in for the private cloud while developing. It can only be on this machine.
namespace DevRelay {

enum class Loopback { localhost, ipv4 };

struct Origin {
    Loopback host = Loopback::localhost;
    int port = 0;

    [[nodiscard]] QString address() const; // "http://127.0.0.1:8080"

    bool operator==(const Origin &) const = default;
};

// The relay that an address of a deployment names; nothing for any address that isn't plain http to this
// machine.
[[nodiscard]] std::optional<Origin> origin(const QString &address);

} // namespace DevRelay

} // namespace morvane
