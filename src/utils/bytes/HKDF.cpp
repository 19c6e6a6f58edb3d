#include "utils/bytes/HKDF.h"

#include <openssl/core_names.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <array>
#include <memory>
#include <stdexcept>

namespace morvane {

namespace {

// Looking an algorithm up by name walks the provider tables; a process needs it once.
EVP_KDF *algorithm()
{
    static EVP_KDF *const fetched = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
    return fetched;
}

} // namespace

SecretBytes HKDF::sha256(const SecretBytes &secret, QByteArrayView info, std::size_t size)
{
    const std::unique_ptr<EVP_KDF_CTX, decltype(&EVP_KDF_CTX_free)> context(EVP_KDF_CTX_new(algorithm()),
                                                                            EVP_KDF_CTX_free);
    // The library's parameters are not const; it only reads them.
    std::array<OSSL_PARAM, 4> parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, const_cast<char *>("SHA256"), 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, const_cast<unsigned char *>(secret.data()),
                                          secret.size()),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, const_cast<char *>(info.data()),
                                          static_cast<std::size_t>(info.size())),
        OSSL_PARAM_construct_end()};
    SecretBytes key(size);
    if (!context || EVP_KDF_derive(context.get(), key.data(), size, parameters.data()) != 1)
        throw std::runtime_error("no key could be derived");
    return key;
}

} // namespace morvane
