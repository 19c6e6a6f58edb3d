#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace morvane {

// What this machine has for a model to run in. GUI thread; the answers are quick.
class LocalMachine {
public:
    struct Memory {
        std::uint64_t main = 0;           // bytes, as the kernel counts them
        std::uint64_t nvidiaGraphics = 0; // of the largest card; none: 0
        std::uint64_t amdGraphics = 0;
    };

    virtual ~LocalMachine() = default;

    [[nodiscard]] virtual Memory memory() const = 0;

    // Bytes that this person may still write where the path lies or would lie; nothing when that isn't known.
    [[nodiscard]] virtual std::optional<std::uint64_t> freeDisk(const QString &path) const = 0;
};

} // namespace morvane
