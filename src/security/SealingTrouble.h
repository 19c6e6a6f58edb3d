#pragma once

#include <QString>

#include <cstdint>

namespace morvane {

// Why what the person writes is stored readable for the time being: losing it would be worse.
enum class SealingTrouble : std::uint8_t {
    None,
    KeychainLocked, // the key is there and behind a prompt
    KeychainSilent, // the place of the key does not answer, or broke
    KeyMissing,     // it is gone, or what stands in its place is no key
    Failed,         // the cipher or the random source
};

// What the window says for as long as it lasts; empty for None.
[[nodiscard]] QString sentenceFor(SealingTrouble trouble);

} // namespace morvane
