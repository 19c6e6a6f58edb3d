#include "attestation/evidence/ECDSASignature.h"

#include "attestation/evidence/OpenSSLHandles.h"

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/params.h>

namespace morvane {

namespace {

using ECDSASignature::Curve;

qsizetype coordinateSize(Curve curve)
{
    switch (curve) {
    case Curve::P256:
        return 32;
    case Curve::P384:
        return 48;
    }
    return 0;
}

const char *groupName(Curve curve)
{
    return curve == Curve::P256 ? "P-256" : "P-384";
}

// Refuses a point that isn't on the curve.
OpenSSL::Key loadKey(Curve curve, QByteArrayView publicKey)
{
    QByteArray point = QByteArray("\x04") + publicKey.toByteArray();
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, const_cast<char *>(groupName(curve)), 0),
        OSSL_PARAM_construct_octet_string(OSSL_PKEY_PARAM_PUB_KEY, point.data(),
                                          static_cast<std::size_t>(point.size())),
        OSSL_PARAM_construct_end()};
    const OpenSSL::KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
    EVP_PKEY *key = nullptr;
    if (context && EVP_PKEY_fromdata_init(context.get()) == 1)
        EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, const_cast<OSSL_PARAM *>(parameters));
    return OpenSSL::Key(key);
}

// OpenSSL takes signatures as a DER sequence of two integers.
QByteArray derForm(QByteArrayView signature)
{
    const auto half = static_cast<int>(signature.size() / 2);
    const OpenSSL::Signature parts(ECDSA_SIG_new());
    BIGNUM *const r = BN_bin2bn(OpenSSL::bytesOf(signature), half, nullptr);
    BIGNUM *const s = BN_bin2bn(OpenSSL::bytesOf(signature) + half, half, nullptr);
    ECDSA_SIG_set0(parts.get(), r, s); // takes both
    QByteArray result(i2d_ECDSA_SIG(parts.get(), nullptr), Qt::Uninitialized);
    auto *der = reinterpret_cast<unsigned char *>(result.data());
    i2d_ECDSA_SIG(parts.get(), &der);
    return result;
}

bool verify(EVP_PKEY *key, const EVP_MD *digest, QByteArrayView signature, QByteArrayView message)
{
    const QByteArray der = derForm(signature);
    const OpenSSL::Digesting context(EVP_MD_CTX_new());
    return EVP_DigestVerifyInit(context.get(), nullptr, digest, nullptr, key) == 1 &&
           EVP_DigestVerify(context.get(), OpenSSL::bytesOf(der), static_cast<std::size_t>(der.size()),
                            OpenSSL::bytesOf(message), static_cast<std::size_t>(message.size())) == 1;
}

} // namespace

bool ECDSASignature::isValid(Curve curve, QByteArrayView publicKey, QByteArrayView signature,
                             QByteArrayView message)
{
    const qsizetype size = 2 * coordinateSize(curve);
    if (publicKey.size() != size || signature.size() != size)
        return false;
    const OpenSSL::Key key = loadKey(curve, publicKey);
    const EVP_MD *const digest = curve == Curve::P256 ? OpenSSL::sha256() : OpenSSL::sha384();
    const bool valid = key && verify(key.get(), digest, signature, message);
    ERR_clear_error(); // a refusal leaves its reasons in the thread's queue
    return valid;
}

} // namespace morvane
