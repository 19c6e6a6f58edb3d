#include "attestation/evidence/PEMCertificates.h"

#include "attestation/evidence/Digest.h"
#include "attestation/evidence/KnownCertificates.h"
#include "attestation/evidence/OpenSSLHandles.h"
#include "utils/bytes/Base64.h"
#include "utils/text/Text.h"

#include <QStringDecoder>

#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <optional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using PEMCertificates::Chain;
using PEMCertificates::ChainError;

using Certificates = std::vector<std::shared_ptr<X509>>;

Certificates readAll(const Chain &chain, KnownCertificates &known)
{
    Certificates certificates;
    certificates.reserve(chain.size());
    for (const QByteArray &der : chain) {
        certificates.push_back(known.read(der));
        if (!certificates.back())
            throw ChainError(ChainError::MalformedCertificate{});
    }
    return certificates;
}

int signatureError(X509 *subject, X509 *issuer, KnownCertificates &known)
{
    if (const int error = X509_check_issued(issuer, subject); error != X509_V_OK)
        return error; // above all, a key that may not sign certificates
    return known.isSigned(subject, issuer) ? X509_V_OK : X509_V_ERR_CERT_SIGNATURE_FAILURE;
}

// The library's comparison answers -1 for a moment up to `date`, 1 for a later one, 0 for one that it can't
// read. A certificate is still valid in its last second (RFC 5280), which that leaves out.
int dateError(const X509 *certificate, time_t date)
{
    const ASN1_TIME *const from = X509_get0_notBefore(certificate);
    const ASN1_TIME *const to = X509_get0_notAfter(certificate);
    const int begins = X509_cmp_time(from, &date);
    const int ends = X509_cmp_time(to, &date);
    if (begins == 0)
        return X509_V_ERR_ERROR_IN_CERT_NOT_BEFORE_FIELD;
    if (begins > 0)
        return X509_V_ERR_CERT_NOT_YET_VALID;
    if (ends == 0)
        return X509_V_ERR_ERROR_IN_CERT_NOT_AFTER_FIELD;
    return ends > 0 || ASN1_TIME_cmp_time_t(to, date) == 0 ? X509_V_OK : X509_V_ERR_CERT_HAS_EXPIRED;
}

// The library's last step, from the root down, in its order: what a certificate's issuer says of it, then its
// dates. Ours asks KnownCertificates for a signature instead of computing it each time. The root's own
// signature proves nothing and is left out, as the library does.
int judgeSignaturesAndDates(X509_STORE_CTX *context)
{
    auto &known = *static_cast<KnownCertificates *>(X509_STORE_CTX_get_app_data(context));
    const time_t date = X509_VERIFY_PARAM_get_time(X509_STORE_CTX_get0_param(context));
    const STACK_OF(X509) *const chain = X509_STORE_CTX_get0_chain(context);
    X509 *issuer = nullptr;
    for (int depth = sk_X509_num(chain) - 1; depth >= 0; --depth) {
        X509 *const subject = sk_X509_value(chain, depth);
        int error = issuer ? signatureError(subject, issuer, known) : X509_V_OK;
        if (error == X509_V_OK)
            error = dateError(subject, date);
        if (error != X509_V_OK) {
            X509_STORE_CTX_set_error(context, error);
            return 0;
        }
        issuer = subject;
    }
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
    X509_STORE_set_verify(store.get(), judgeSignaturesAndDates);
    return store;
}

// The library's reason for refusing the chain; nothing when it accepts it.
std::optional<QString> refusal(const Certificates &certificates, const QDateTime &date,
                               KnownCertificates &known)
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
    X509_STORE_CTX_set_app_data(context.get(), &known);
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
                                                   const QDateTime &date, KnownCertificates &known)
{
    if (chain.empty())
        throw ChainError(ChainError::MalformedCertificate{});
    const QString rootSHA256 = Digest::sha256Hex(chain.back());
    if (rootSHA256 != pinnedRootSHA256.toLower())
        throw ChainError(ChainError::RootNotPinned{rootSHA256});
    const Certificates certificates = readAll(chain, known);
    const auto reason = refusal(certificates, date, known);
    ERR_clear_error();
    if (reason)
        throw ChainError(ChainError::ChainRejected{*reason});
    return Leaf(certificates.front());
}

PEMCertificates::Leaf PEMCertificates::verifyChain(const Chain &chain, const QString &pinnedRootSHA256,
                                                   const QDateTime &date)
{
    KnownCertificates none;
    return verifyChain(chain, pinnedRootSHA256, date, none);
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
    return Leaf(KnownCertificates().read(certificate)).publicKey();
}

} // namespace morvane
