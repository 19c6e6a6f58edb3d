#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace morvane {

// The two shapes of a sealed value, byte for byte. Both hold the same box: nonce, ciphertext, tag. Any
// thread.
//
//   field   U+0001 "KVT1:" and the box in standard base64, for a text column
//   file    "KVT1" and the box, for a file
namespace SealedForm {

inline constexpr QStringView fieldMarker{u"\u0001KVT1:"};
inline constexpr QByteArrayView fileMagic{"KVT1", 4};
inline constexpr qsizetype keySize = 32;

[[nodiscard]] bool isSealedField(QStringView text);

// Throws std::runtime_error when the cipher fails. Half of a surrogate pair seals as U+FFFD.
[[nodiscard]] QString sealField(const QString &text, const SecretBytes &key);

// Nothing for a field without the marker, a broken or tampered one, and one under another key.
[[nodiscard]] std::optional<QString> openField(const QString &field, const SecretBytes &key);

// Longer than the magic and beginning with it.
[[nodiscard]] bool isSealedFile(QByteArrayView contents);

// Throws std::runtime_error when the cipher fails.
[[nodiscard]] QByteArray sealFile(QByteArrayView plain, const SecretBytes &key);

// Nothing for contents that are not sealed, broken, tampered, or under another key.
[[nodiscard]] std::optional<QByteArray> openFile(QByteArrayView contents, const SecretBytes &key);

} // namespace SealedForm

} // namespace morvane
