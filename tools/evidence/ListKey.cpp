#include "evidence/ListKey.h"

#include "evidence/KeyText.h"

#include <stdexcept>

namespace morvane {

ListKey::ListKey()
    : ListKey(std::shared_ptr<EVP_PKEY>(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), EVP_PKEY_free))
{}

ListKey::ListKey(std::shared_ptr<EVP_PKEY> key)
    : m_key(std::move(key))
{
    if (!m_key || EVP_PKEY_is_a(m_key.get(), "ED25519") != 1)
        throw std::runtime_error("no key");
}

ListKey ListKey::read(const QByteArray &pem)
{
    return ListKey(KeyText::read(pem));
}

QByteArray ListKey::pem() const
{
    return KeyText::write(m_key.get());
}

QByteArray ListKey::publicKey() const
{
    QByteArray key(32, '\0');
    auto size = static_cast<std::size_t>(key.size());
    EVP_PKEY_get_raw_public_key(m_key.get(), reinterpret_cast<unsigned char *>(key.data()), &size);
    return key;
}

QByteArray ListKey::signatureFile(QByteArrayView list) const
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    QByteArray signature(64, '\0');
    auto size = static_cast<std::size_t>(signature.size());
    if (EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, m_key.get()) != 1 ||
        EVP_DigestSign(context.get(), reinterpret_cast<unsigned char *>(signature.data()), &size,
                       reinterpret_cast<const unsigned char *>(list.data()),
                       static_cast<std::size_t>(list.size())) != 1)
        throw std::runtime_error("no signature");
    return signature.toBase64() + '\n';
}

} // namespace morvane
