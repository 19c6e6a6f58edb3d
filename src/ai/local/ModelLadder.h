#pragma once

#include "ai/local/LocalMachine.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace morvane {

// Which model suits a machine. Pure.
namespace ModelLadder {

inline constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;

// For "llama3.2:1b", without which nothing is set up.
[[nodiscard]] QString smallest();

// For pictures.
[[nodiscard]] QString vision();

// By memory alone. A card counts where the runtime can use it: NVIDIA's always; AMD's only with a runtime
// that the person installed, because the managed one comes without the libraries for it.
[[nodiscard]] QString recommended(const LocalMachine::Memory &memory, bool usesAMD);

// Whether a model for pictures runs here beside the other.
[[nodiscard]] bool offersVision(const LocalMachine::Memory &memory, bool usesAMD);

// Bytes of its download.
[[nodiscard]] std::uint64_t size(const QString &model);

// Bytes that must be free before it is fetched.
[[nodiscard]] std::uint64_t need(const QString &model);

// The recommended model or the first smaller one that fits; nothing when none does. An unknown disk fits.
[[nodiscard]] std::optional<QString> fitting(const QString &recommended,
                                             std::optional<std::uint64_t> freeDisk);

} // namespace ModelLadder

} // namespace morvane
