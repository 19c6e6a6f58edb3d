#pragma once

#include <QByteArray>

#include <openssl/evp.h>

#include <memory>

namespace morvane {

// A fresh ECDSA key that signs as hardware does. Copies share the key.
class SigningKey {
public:
    enum class Curve { P256, P384 };

    explicit SigningKey(Curve curve);

    [[nodiscard]] QByteArray publicKey() const; // X then Y

    // r then s, over the curve's own digest.
    [[nodiscard]] QByteArray sign(QByteArrayView message) const;

    [[nodiscard]] EVP_PKEY *handle() const { return m_key.get(); }
    [[nodiscard]] const EVP_MD *digest() const;

    bool operator==(const SigningKey &) const = default; // the very same key

private:
    Curve m_curve;
    std::shared_ptr<EVP_PKEY> m_key;
};

} // namespace morvane
