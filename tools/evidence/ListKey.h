#pragma once

#include <QByteArray>

#include <openssl/evp.h>

#include <memory>

namespace morvane {

// A fresh Ed25519 key that signs lists of accepted servers. Copies share the key.
class ListKey {
public:
    ListKey();

    [[nodiscard]] QByteArray publicKey() const; // 32 bytes

    // The text of the signature file that lies beside the list.
    [[nodiscard]] QByteArray signatureFile(QByteArrayView list) const;

private:
    std::shared_ptr<EVP_PKEY> m_key;
};

} // namespace morvane
