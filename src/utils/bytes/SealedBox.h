#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QByteArray>

#include <optional>

namespace morvane {

// AES-256-GCM in one piece: 12 bytes of random nonce, the ciphertext, 16 bytes of tag. No additional
// authenticated data. Any thread.
namespace SealedBox {

inline constexpr qsizetype nonceSize = 12;
inline constexpr qsizetype tagSize = 16;
inline constexpr std::size_t keySize = 32;

// A fresh nonce each time. Throws std::runtime_error when the key has another size or the library fails.
[[nodiscard]] QByteArray seal(QByteArrayView plaintext, const SecretBytes &key);

// Nothing when the box is too short, the key has another size or the tag does not verify.
[[nodiscard]] std::optional<QByteArray> open(QByteArrayView box, const SecretBytes &key);

} // namespace SealedBox

} // namespace morvane
