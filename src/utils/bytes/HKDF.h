#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QByteArrayView>

namespace morvane {

// Keys from a shared secret (RFC 5869). Any thread.
namespace HKDF {

// `size` bytes, without salt. `info` sets keys of one secret apart. Throws std::runtime_error when the
// library fails or `size` is over 8160.
[[nodiscard]] SecretBytes sha256(const SecretBytes &secret, QByteArrayView info, std::size_t size);

} // namespace HKDF

} // namespace morvane
