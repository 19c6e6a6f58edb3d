#pragma once

#include <QByteArray>

#include <openssl/evp.h>

#include <memory>

namespace morvane {

// An ECDSA key that signs as hardware does, a fresh one unless it is read. Copies share the key.
class SigningKey {
public:
    enum class Curve { P256, P384 };

    explicit SigningKey(Curve curve);

    // The key in a PEM text, and the public half in a certificate's DER, which can't sign. Throw a
    // runtime_error for anything else than a key on one of the two curves.
    [[nodiscard]] static SigningKey read(const QByteArray &pem);
    [[nodiscard]] static SigningKey ofCertificate(const QByteArray &der);

    [[nodiscard]] QByteArray publicKey() const; // X then Y

    // r then s, over the curve's own digest.
    [[nodiscard]] QByteArray sign(QByteArrayView message) const;

    [[nodiscard]] EVP_PKEY *handle() const { return m_key.get(); }
    [[nodiscard]] const EVP_MD *digest() const;

    bool operator==(const SigningKey &) const = default; // the very same key

private:
    explicit SigningKey(std::shared_ptr<EVP_PKEY> key);

    Curve m_curve;
    std::shared_ptr<EVP_PKEY> m_key;
};

} // namespace morvane
