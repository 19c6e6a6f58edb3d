#pragma once

#include <QByteArray>

namespace morvane {

// ECDSA with bare keys and signatures, as hardware writes them. Any thread.
namespace ECDSASignature {

enum class Curve { P256, P384 };

// Whether `signature` (r then s) over `message` holds under `publicKey` (X then Y). The message is hashed
// with SHA-256 on P-256 and SHA-384 on P-384. False also for a key that is no point of the curve and for
// anything of another size.
[[nodiscard]] bool isValid(Curve curve, QByteArrayView publicKey, QByteArrayView signature,
                           QByteArrayView message);

} // namespace ECDSASignature

} // namespace morvane
