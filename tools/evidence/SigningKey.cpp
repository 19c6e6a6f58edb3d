#include "evidence/SigningKey.h"

#include "evidence/KeyText.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/x509.h>

#include <stdexcept>

namespace morvane {

namespace {

unsigned char *bytesOf(QByteArray &array)
{
    return reinterpret_cast<unsigned char *>(array.data());
}

} // namespace

SigningKey::SigningKey(Curve curve)
    : m_curve(curve)
    , m_key(EVP_EC_gen(curve == Curve::P256 ? "P-256" : "P-384"), EVP_PKEY_free)
{
    if (!m_key)
        throw std::runtime_error("no key");
}

SigningKey::SigningKey(std::shared_ptr<EVP_PKEY> key)
    : m_curve(EVP_PKEY_get_bits(key.get()) == 256 ? Curve::P256 : Curve::P384)
    , m_key(std::move(key))
{
    const bool isOnCurve = EVP_PKEY_get_bits(m_key.get()) == (m_curve == Curve::P256 ? 256 : 384);
    if (EVP_PKEY_is_a(m_key.get(), "EC") != 1 || !isOnCurve)
        throw std::runtime_error("the key is on neither curve");
}

SigningKey SigningKey::read(const QByteArray &pem)
{
    return SigningKey(KeyText::read(pem));
}

SigningKey SigningKey::ofCertificate(const QByteArray &der)
{
    const auto *cursor = reinterpret_cast<const unsigned char *>(der.data());
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        d2i_X509(nullptr, &cursor, static_cast<long>(der.size())), X509_free);
    std::shared_ptr<EVP_PKEY> key(certificate ? X509_get_pubkey(certificate.get()) : nullptr, EVP_PKEY_free);
    if (!key)
        throw std::runtime_error("the certificate can't be read");
    return SigningKey(std::move(key));
}

const EVP_MD *SigningKey::digest() const
{
    return m_curve == Curve::P256 ? EVP_sha256() : EVP_sha384();
}

QByteArray SigningKey::publicKey() const
{
    QByteArray point(97, '\0');
    std::size_t length = 0;
    EVP_PKEY_get_octet_string_param(m_key.get(), OSSL_PKEY_PARAM_PUB_KEY, bytesOf(point), 97, &length);
    return point.mid(1, static_cast<qsizetype>(length) - 1);
}

QByteArray SigningKey::sign(QByteArrayView message) const
{
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    QByteArray der(128, '\0');
    std::size_t length = 128;
    EVP_DigestSignInit(context.get(), nullptr, digest(), nullptr, m_key.get());
    EVP_DigestSign(context.get(), bytesOf(der), &length,
                   reinterpret_cast<const unsigned char *>(message.data()),
                   static_cast<std::size_t>(message.size()));
    const unsigned char *cursor = bytesOf(der);
    const std::unique_ptr<ECDSA_SIG, decltype(&ECDSA_SIG_free)> parts(
        d2i_ECDSA_SIG(nullptr, &cursor, static_cast<long>(length)), ECDSA_SIG_free);
    const int half = m_curve == Curve::P256 ? 32 : 48;
    QByteArray raw(2 * half, '\0');
    BN_bn2binpad(ECDSA_SIG_get0_r(parts.get()), bytesOf(raw), half);
    BN_bn2binpad(ECDSA_SIG_get0_s(parts.get()), bytesOf(raw) + half, half);
    return raw;
}

} // namespace morvane
