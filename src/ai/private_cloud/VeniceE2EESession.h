#pragma once

#include "ai/private_cloud/Secp256k1.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"

#include <exception>

namespace morvane {

// The encryption of one attempt of one turn: messages to the key that the hardware proof vouches for, reply
// pieces to a key of this session's own, which dies with it. Each message is sealed for itself, under a key
// pair of its own, so pieces need no order. Members may be called on any thread, one at a time.
//
// The sealed form of a message, in lower-case hexadecimal:
//
//   0    65   the sender's one-time public key, uncompressed
//   65   12   AES-GCM nonce
//   77   n    ciphertext
//   77+n 16   AES-GCM tag
//
// The AES-256 key is HKDF-SHA256 of the X coordinate that both sides agree on, without salt.
class VeniceE2EESession {
public:
    static constexpr qsizetype smallestSealed = 93; // bytes, for an empty text

    class Failure final : public std::exception {
    public:
        enum class Reason { badModelKey, sealFailed, openFailed };

        explicit Failure(Reason reason)
            : m_reason(reason)
        {}

        [[nodiscard]] Reason reason() const { return m_reason; }
        [[nodiscard]] const char *what() const noexcept override;

    private:
        Reason m_reason;
    };

    // Throws Failure (badModelKey) for a key that isn't on the curve, Secp256k1::Failure when no session key
    // can be made.
    explicit VeniceE2EESession(const VeniceAttestationVerifier::Verified &enclave);

    // What the server needs to seal for us: 65 bytes.
    [[nodiscard]] const QByteArray &publicKey() const { return m_sessionKey.publicKey; }
    [[nodiscard]] const QByteArray &modelKey() const { return m_modelKey; }

    // Throws Failure (sealFailed).
    [[nodiscard]] QString seal(const QString &text) const;

    // Bytes that are no UTF-8 read as U+FFFD. Throws Failure (openFailed).
    [[nodiscard]] QString open(QStringView hex) const;

    // The two directions over bare keys, for a program that stands at the other end.
    [[nodiscard]] static QString sealTo(QByteArrayView publicKey, const QString &text);
    [[nodiscard]] static QString openWith(const SecretBytes &privateKey, QStringView hex);

private:
    QByteArray m_modelKey;
    Secp256k1::KeyPair m_sessionKey;
};

} // namespace morvane
