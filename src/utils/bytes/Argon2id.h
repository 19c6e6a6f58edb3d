#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QByteArrayView>

#include <cstdint>

namespace morvane {

// A key from a passphrase, slow and costly in memory so that guessing is (RFC 9106). One lane: whoever waits
// has one core for it. Any thread, though never the GUI's.
namespace Argon2id {

struct Cost {
    std::uint32_t memory = 0; // KiB
    std::uint32_t passes = 0;

    bool operator==(const Cost &) const = default;
};

inline constexpr std::uint32_t usualMemory = 128 * 1024;
inline constexpr qsizetype saltSize = 16;

// Whether a cost that was read somewhere is one to pay: at most a gigabyte, and some ten seconds.
[[nodiscard]] bool isBearable(const Cost &cost);

// What takes about half a second of one core here, and never fewer passes than three.
// Throws std::bad_alloc.
[[nodiscard]] Cost measured();

// `size` bytes. Throws std::bad_alloc where the memory isn't there, std::invalid_argument for a cost that is
// not bearable, and std::runtime_error when the library fails.
[[nodiscard]] SecretBytes derive(const SecretBytes &passphrase, QByteArrayView salt, const Cost &cost,
                                 std::size_t size);

} // namespace Argon2id

} // namespace morvane
