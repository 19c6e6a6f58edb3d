#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace morvane {

namespace Hex {

// Bytes of a hexadecimal text in either letter case, with or without a leading "0x". Nothing for an odd
// number of digits or any other character. The empty text is no bytes.
[[nodiscard]] std::optional<QByteArray> decode(QStringView text);

// Lower case, no prefix.
[[nodiscard]] QString encode(QByteArrayView bytes);

} // namespace Hex

} // namespace morvane
