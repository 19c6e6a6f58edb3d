#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace morvane {

// What this machine has for a model to run in, and what a process of it listens on. Any thread.
class LocalMachine {
public:
    struct Memory {
        std::uint64_t main = 0;           // bytes, as the kernel counts them
        std::uint64_t nvidiaGraphics = 0; // of the largest card; none: 0
        std::uint64_t amdGraphics = 0;

        bool operator==(const Memory &) const = default;
    };

    struct Listener {
        QByteArray address; // 4 or 16 bytes, in network order
        int port = 0;

        bool operator==(const Listener &) const = default;
        [[nodiscard]] bool isLoopback() const;
    };

    virtual ~LocalMachine() = default;

    // May take a second: a driver may have to wake its card.
    [[nodiscard]] virtual Memory memory() const = 0;

    // Bytes that this person may still write where the path lies or would lie; nothing when that isn't known.
    [[nodiscard]] virtual std::optional<std::uint64_t> freeDisk(const QString &path) const = 0;

    // Where the process and what it has started take connections over TCP; nothing when that can't be seen.
    [[nodiscard]] virtual std::optional<std::vector<Listener>> listeners(qint64 process) const = 0;

    // Whether anybody else takes connections from this machine at that port: a name such as "localhost" has
    // several addresses, and the one that is tried first may be theirs.
    [[nodiscard]] virtual bool isShared(int /*port*/, qint64 /*process*/) const { return false; }
};

} // namespace morvane
