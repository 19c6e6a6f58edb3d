#pragma once

#include "utils/bytes/SecretBytes.h"

#include <QByteArray>

#include <exception>
#include <functional>

namespace morvane {

// Key pairs and key agreement on the curve secp256k1, through libsecp256k1. Any thread: its one context is
// blinded when it is made and only read afterwards.
namespace Secp256k1 {

inline constexpr qsizetype privateKeySize = 32;
inline constexpr qsizetype publicKeySize = 65; // uncompressed: 0x04, then X and Y

class Failure final : public std::exception {
public:
    enum class Reason { noRandomness, invalidPrivateKey, invalidPublicKey, keyAgreementFailed };

    explicit Failure(Reason reason)
        : m_reason(reason)
    {}

    [[nodiscard]] Reason reason() const { return m_reason; }
    [[nodiscard]] const char *what() const noexcept override;

private:
    Reason m_reason;
};

struct KeyPair {
    SecretBytes privateKey; // wiped when the pair goes
    QByteArray publicKey;
};

// Gives `count` random bytes, or throws.
using RandomSource = std::function<SecretBytes(std::size_t count)>;

// Not every 32 bytes are a private key: what the curve refuses is wiped and drawn again, eight draws in all.
[[nodiscard]] KeyPair generateKeyPair(const RandomSource &random = SecretBytes::random);

// The pair of a private key that is known. Throws Failure (invalidPrivateKey).
[[nodiscard]] KeyPair pairOf(SecretBytes privateKey);

// The X coordinate of the shared point, 32 bytes, not hashed.
[[nodiscard]] SecretBytes sharedSecret(const SecretBytes &privateKey, QByteArrayView publicKey);

[[nodiscard]] bool isValidPublicKey(QByteArrayView bytes);

} // namespace Secp256k1

} // namespace morvane
