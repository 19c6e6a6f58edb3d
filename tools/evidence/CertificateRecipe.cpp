#include "evidence/CertificateRecipe.h"

#include <QStringList>

#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <atomic>

namespace morvane {

namespace {

void setName(X509_NAME *name, const QString &commonName)
{
    const QByteArray utf8 = commonName.toUtf8();
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(utf8.data()),
                               static_cast<int>(utf8.size()), -1, 0);
}

void addExtension(X509 *certificate, int nid, const char *value)
{
    X509_EXTENSION *const extension = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value);
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

void addExtension(X509 *certificate, const char *identifier, bool isCritical, const QByteArray &der)
{
    ASN1_OBJECT *const id = OBJ_txt2obj(identifier, 1);
    ASN1_OCTET_STRING *const value = ASN1_OCTET_STRING_new();
    ASN1_OCTET_STRING_set(value, reinterpret_cast<const unsigned char *>(der.data()),
                          static_cast<int>(der.size()));
    X509_EXTENSION *const extension = X509_EXTENSION_create_by_OBJ(nullptr, id, isCritical ? 1 : 0, value);
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
    ASN1_OCTET_STRING_free(value);
    ASN1_OBJECT_free(id);
}

} // namespace

QByteArray CertificateRecipe::mint() const
{
    if (!minted.isEmpty())
        return minted;
    static std::atomic<long> serial = 1;
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), X509_free);
    X509 *const x = certificate.get();
    X509_set_version(x, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(x), serial++);
    ASN1_TIME_set(X509_getm_notBefore(x), static_cast<time_t>(from.toSecsSinceEpoch()));
    ASN1_TIME_set(X509_getm_notAfter(x), static_cast<time_t>(to.toSecsSinceEpoch()));
    setName(X509_get_subject_name(x), name);
    setName(X509_get_issuer_name(x), issuer);
    X509_set_pubkey(x, key.handle());
    addExtension(x, NID_basic_constraints, isCA ? "critical,CA:TRUE" : "critical,CA:FALSE");
    addExtension(x, NID_key_usage, isCA ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature");
    if (unknownCriticalExtension)
        addExtension(x, "1.3.6.1.4.1.99999.1", true, QByteArray());
    if (!sgxExtension.isEmpty())
        addExtension(x, "1.2.840.113741.1.13.1", false, sgxExtension);
    if (!servesAs.isEmpty())
        addExtension(x, NID_subject_alt_name, servesAs.constData());
    X509_sign(x, issuerKey.handle(), issuerKey.digest());
    QByteArray der(i2d_X509(x, nullptr), '\0');
    auto *cursor = reinterpret_cast<unsigned char *>(der.data());
    i2d_X509(x, &cursor);
    return der;
}

ChainRecipe chainRecipe(const QStringList &namesLeafFirst, const SigningKey &leafKey, SigningKey::Curve curve)
{
    ChainRecipe chain;
    SigningKey key = leafKey;
    for (qsizetype i = 0; i < namesLeafFirst.size(); ++i) {
        const bool isRoot = i + 1 == namesLeafFirst.size();
        const SigningKey issuerKey = isRoot ? key : SigningKey(curve);
        chain.push_back({.name = namesLeafFirst[i],
                         .key = key,
                         .issuer = namesLeafFirst[isRoot ? i : i + 1],
                         .issuerKey = issuerKey,
                         .isCA = i > 0});
        key = issuerKey;
    }
    return chain;
}

QByteArray pemText(const std::vector<QByteArray> &chain)
{
    QByteArray text;
    for (const QByteArray &der : chain) {
        text += "-----BEGIN CERTIFICATE-----\n";
        const QByteArray base64 = der.toBase64();
        for (qsizetype at = 0; at < base64.size(); at += 64)
            text += base64.mid(at, 64) + '\n';
        text += "-----END CERTIFICATE-----\n";
    }
    return text;
}

} // namespace morvane
