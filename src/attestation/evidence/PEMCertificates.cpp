#include "attestation/evidence/PEMCertificates.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/OpenSSLHandles.h"
#include "utils/bytes/Base64.h"
#include "utils/text/Text.h"

#include <QStringDecoder>

#include <openssl/core_names.h>
#include <openssl/err.h>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using PEMCertificates::Chain;
using PEMCertificates::ChainError;

// Nothing when the bytes aren't exactly one certificate.
OpenSSL::Certificate parseCertificate(const QByteArray &der)
{
    const unsigned char *cursor = OpenSSL::bytesOf(der);
    const unsigned char *const end = cursor + der.size();
    OpenSSL::Certificate certificate(d2i_X509(nullptr, &cursor, static_cast<long>(der.size())));
    if (cursor != end)
        certificate.reset();
    ERR_clear_error();
    return certificate;
}

std::vector<OpenSSL::Certificate> parseAll(const Chain &chain)
{
    std::vector<OpenSSL::Certificate> certificates;
    certificates.reserve(chain.size());
    for (const QByteArray &der : chain) {
        certificates.push_back(parseCertificate(der));
        if (!certificates.back())
            throw ChainError(ChainError::MalformedCertificate{});
    }
    return certificates;
}

// A certificate is still valid in its last second (RFC 5280); the library's comparison leaves that second
// out.
int acceptLastSecond(int good, X509_STORE_CTX *context)
{
    if (good == 1 || X509_STORE_CTX_get_error(context) != X509_V_ERR_CERT_HAS_EXPIRED)
        return good;
    const ASN1_TIME *const end = X509_get0_notAfter(X509_STORE_CTX_get_current_cert(context));
    const time_t date = X509_VERIFY_PARAM_get_time(X509_STORE_CTX_get0_param(context));
    if (ASN1_TIME_cmp_time_t(end, date) != 0)
        return 0;
    X509_STORE_CTX_set_error(context, X509_V_OK);
    return 1;
}

// A store that trusts one certificate and nothing of the system's.
OpenSSL::Store storeTrusting(X509 *root, const QDateTime &date)
{
    OpenSSL::Store store(X509_STORE_new());
    if (!store || X509_STORE_add_cert(store.get(), root) != 1)
        return nullptr;
    X509_VERIFY_PARAM *const rules = X509_STORE_get0_param(store.get());
    X509_VERIFY_PARAM_set_time(rules, static_cast<time_t>(date.toSecsSinceEpoch()));
    X509_VERIFY_PARAM_set_flags(rules, X509_V_FLAG_PARTIAL_CHAIN); // the pin decides what a root is
    X509_VERIFY_PARAM_set_auth_level(rules, 2);                    // 112 bits: no SHA-1, no short keys
    X509_STORE_set_verify_cb(store.get(), acceptLastSecond);
    return store;
}

// The library's reason for refusing the chain; nothing when it accepts it.
std::optional<QString> refusal(const std::vector<OpenSSL::Certificate> &certificates, const QDateTime &date)
{
    const OpenSSL::BorrowingStack others(sk_X509_new_null());
    const OpenSSL::Store store = storeTrusting(certificates.back().get(), date);
    const OpenSSL::StoreContext context(X509_STORE_CTX_new());
    bool assembled = others && store && context;
    for (const auto &certificate : certificates)
        assembled = assembled && sk_X509_push(others.get(), certificate.get()) > 0;
    if (!assembled ||
        X509_STORE_CTX_init(context.get(), store.get(), certificates.front().get(), others.get()) != 1)
        return u"the chain could not be assembled"_s;
    if (X509_verify_cert(context.get()) == 1)
        return std::nullopt;
    const int error = X509_STORE_CTX_get_error(context.get());
    if (error == X509_V_OK)
        return u"the certificate chain did not verify"_s;
    return QString::fromLatin1(X509_verify_cert_error_string(error));
}

} // namespace

Chain PEMCertificates::blocks(QStringView text)
{
    Chain certificates;
    std::optional<QString> open;
    for (const QStringView rawLine : text.tokenize(u'\n')) {
        const QString line = Text::trimmed(rawLine.toString());
        if (line.startsWith("-----BEGIN CERTIFICATE"_L1)) {
            open.emplace();
        } else if (line.startsWith("-----END CERTIFICATE"_L1)) {
            if (const auto der = open ? Base64::decode(open->toUtf8()) : std::nullopt)
                certificates.push_back(*der);
            open.reset();
        } else if (open) {
            open->append(line);
        }
    }
    return certificates;
}

Chain PEMCertificates::blocks(QByteArrayView utf8)
{
    // A byte order mark stays in: it isn't white space, so the line it begins is no marker.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(utf8);
    return blocks(QStringView(text));
}

PEMCertificates::Leaf PEMCertificates::verifyChain(const Chain &chain, const QString &pinnedRootSHA256,
                                                   const QDateTime &date)
{
    if (chain.empty())
        throw ChainError(ChainError::MalformedCertificate{});
    const QString rootSHA256 = Digest::sha256Hex(chain.back());
    if (rootSHA256 != pinnedRootSHA256.toLower())
        throw ChainError(ChainError::RootNotPinned{rootSHA256});
    auto certificates = parseAll(chain);
    const auto reason = refusal(certificates, date);
    ERR_clear_error();
    if (reason)
        throw ChainError(ChainError::ChainRejected{*reason});
    return Leaf(std::move(certificates.front()));
}

QByteArray PEMCertificates::Leaf::publicKey() const
{
    const EVP_PKEY *const key = m_certificate ? X509_get0_pubkey(m_certificate.get()) : nullptr;
    QByteArray point(1 + 2 * 66, Qt::Uninitialized); // room for the longest curve, P-521
    std::size_t length = 0;
    const bool read = key && EVP_PKEY_is_a(key, "EC") &&
                      EVP_PKEY_get_octet_string_param(key, OSSL_PKEY_PARAM_PUB_KEY, OpenSSL::bytesOf(point),
                                                      static_cast<std::size_t>(point.size()), &length) == 1;
    ERR_clear_error();
    if (!read || length == 0 || point[0] != '\x04')
        throw ChainError(ChainError::NoPublicKey{});
    return point.mid(1, static_cast<qsizetype>(length) - 1);
}

QByteArray PEMCertificates::leafPublicKey(const QByteArray &certificate)
{
    return Leaf(parseCertificate(certificate)).publicKey();
}

} // namespace morvane
