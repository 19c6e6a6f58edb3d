#pragma once

#include <QByteArray>

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <memory>

namespace morvane {

// Owners and byte views for OpenSSL's C interface. Included by .cpp files of this folder only.
namespace OpenSSL {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T *object) const
    {
        release(object);
    }
};

template <typename T, auto release>
using Owner = std::unique_ptr<T, Release<release>>;

using Digesting = Owner<EVP_MD_CTX, EVP_MD_CTX_free>;
using Key = Owner<EVP_PKEY, EVP_PKEY_free>;
using KeyContext = Owner<EVP_PKEY_CTX, EVP_PKEY_CTX_free>;
using Signature = Owner<ECDSA_SIG, ECDSA_SIG_free>;
using Certificate = Owner<X509, X509_free>;
using Store = Owner<X509_STORE, X509_STORE_free>;
using StoreContext = Owner<X509_STORE_CTX, X509_STORE_CTX_free>;

inline void releaseBorrowingStack(STACK_OF(X509) * stack)
{
    sk_X509_free(stack);
}
using BorrowingStack = Owner<STACK_OF(X509), releaseBorrowingStack>; // doesn't own its certificates

inline const unsigned char *bytesOf(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char *>(view.data());
}

inline unsigned char *bytesOf(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

// Looking an algorithm up by name walks the provider tables; a process needs it once.
inline const EVP_MD *sha256()
{
    static EVP_MD *const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return algorithm;
}

inline const EVP_MD *sha384()
{
    static EVP_MD *const algorithm = EVP_MD_fetch(nullptr, "SHA384", nullptr);
    return algorithm;
}

} // namespace OpenSSL

} // namespace morvane
