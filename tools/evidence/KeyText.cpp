#include "evidence/KeyText.h"

#include <openssl/pem.h>

#include <stdexcept>

namespace morvane {

QByteArray KeyText::write(EVP_PKEY *key)
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), BIO_free);
    char *text = nullptr;
    if (PEM_write_bio_PKCS8PrivateKey(memory.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1)
        throw std::runtime_error("the key can't be written");
    const long size = BIO_get_mem_data(memory.get(), &text);
    return {text, size};
}

std::shared_ptr<EVP_PKEY> KeyText::read(const QByteArray &pem)
{
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(
        BIO_new_mem_buf(pem.constData(), static_cast<int>(pem.size())), BIO_free);
    std::shared_ptr<EVP_PKEY> key(PEM_read_bio_PrivateKey(memory.get(), nullptr, nullptr, nullptr),
                                  EVP_PKEY_free);
    if (!key)
        throw std::runtime_error("the text holds no private key");
    return key;
}

} // namespace morvane
