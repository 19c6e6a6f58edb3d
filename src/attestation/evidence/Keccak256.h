#pragma once

#include <QByteArray>

namespace morvane {

// Keccak-256 with the padding it had before it became a standard (0x01), so its digests differ from those of
// SHA3-256. Account addresses are made with it. Any thread; not for secrets.
namespace Keccak256 {

[[nodiscard]] QByteArray hash(QByteArrayView message); // 32 bytes

} // namespace Keccak256

} // namespace morvane
