#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>

namespace morvane {

// What one press would do, so that a window can say it and ask once.
struct SetupPlan {
    enum class Runtime {
        answering, // a server is there and is used as it is
        installed, // ours, from before
        found,     // one that the person installed; `foundAt` says where
        toDownload,
        unavailable, // none is published for this kind of machine: the person installs one themselves
    };

    Runtime runtime = Runtime::unavailable;
    QString foundAt;
    std::optional<std::uint64_t> runtimeBytes; // to be fetched; nothing where there is nothing, or no number
    QString model;                             // empty when no model fits the disk
    std::uint64_t modelBytes = 0;              // 0 for a model that is there already
    std::uint64_t alreadyFetched = 0;          // bytes of the runtime from a download that was broken off
    std::optional<std::uint64_t> freeDisk;
    QString problem; // why a press would fail; empty when it wouldn't

    // Bytes that a press fetches.
    [[nodiscard]] std::uint64_t toFetch() const
    {
        const std::uint64_t runtimeLeft = runtimeBytes.value_or(0);
        return modelBytes + (runtimeLeft > alreadyFetched ? runtimeLeft - alreadyFetched : 0);
    }

    // At 50 Mbit/s, a usual line; what it really is shows once it has begun.
    [[nodiscard]] std::chrono::minutes timeAtUsualSpeed() const
    {
        constexpr std::uint64_t bytesPerMinute = 60ULL * 50'000'000 / 8;
        return std::chrono::minutes((toFetch() + bytesPerMinute - 1) / bytesPerMinute);
    }

    // What installs a runtime by hand, to be copied into a terminal.
    [[nodiscard]] static QString installCommand();
};

} // namespace morvane
