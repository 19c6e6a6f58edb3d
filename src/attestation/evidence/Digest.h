#pragma once

#include <QByteArray>
#include <QString>

#include <initializer_list>

namespace morvane {

// SHA-2 over pieces in a row, as if they were one text. Any thread.
namespace Digest {

using Pieces = std::initializer_list<QByteArrayView>;

[[nodiscard]] QByteArray sha256(Pieces pieces); // 32 bytes
[[nodiscard]] QByteArray sha384(Pieces pieces); // 48 bytes

// Lower-case hexadecimal, the form in which pins and lists state a digest.
[[nodiscard]] QString sha256Hex(QByteArrayView bytes);

} // namespace Digest

} // namespace morvane
