#pragma once

#include <QByteArray>

#include <openssl/evp.h>

#include <memory>

namespace morvane {

// An Ed25519 key that signs lists of accepted servers, a fresh one unless it is read. Copies share the key.
class ListKey {
public:
    ListKey();

    // The key in a PEM text. Throws a runtime_error when it holds no Ed25519 key.
    [[nodiscard]] static ListKey read(const QByteArray &pem);
    [[nodiscard]] QByteArray pem() const;

    [[nodiscard]] QByteArray publicKey() const; // 32 bytes

    // The text of the signature file that lies beside the list.
    [[nodiscard]] QByteArray signatureFile(QByteArrayView list) const;

private:
    explicit ListKey(std::shared_ptr<EVP_PKEY> key);

    std::shared_ptr<EVP_PKEY> m_key;
};

} // namespace morvane
