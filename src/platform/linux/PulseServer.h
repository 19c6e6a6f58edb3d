#pragma once

#include <QString>

#include <chrono>
#include <optional>

namespace morvane {

// What only the sound server itself says. Qt lists its devices but not which of them it uses by default.
namespace PulseServer {

struct Defaults {
    QString source; // of recordings; the same text as the id of Qt's device
    QString sink;
};

// Waits for the server's answer, at most `limit`: for a thread that may. Nothing without a server.
[[nodiscard]] std::optional<Defaults> defaults(std::chrono::milliseconds limit);

} // namespace PulseServer

} // namespace morvane
