#include "attestation/evidence/KnownCertificates.h"

#include "attestation/evidence/OpenSSLHandles.h"

#include <openssl/err.h>

namespace morvane {

namespace {

OpenSSL::Certificate parse(const QByteArray &der)
{
    const unsigned char *cursor = OpenSSL::bytesOf(der);
    const unsigned char *const end = cursor + der.size();
    OpenSSL::Certificate certificate(d2i_X509(nullptr, &cursor, static_cast<long>(der.size())));
    if (cursor != end)
        certificate.reset();
    ERR_clear_error();
    return certificate;
}

} // namespace

// Neither lock is held during the work itself: two threads that meet a certificate or a signature for the
// first time may both do it, and come to the same result.
std::shared_ptr<X509> KnownCertificates::read(const QByteArray &der)
{
    {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_certificates.find(der); known != m_certificates.end())
            return known->second;
    }
    std::shared_ptr<X509> certificate = parse(der);
    if (!certificate)
        return nullptr;
    const std::lock_guard lock(m_mutex);
    return m_certificates.emplace(der, std::move(certificate)).first->second;
}

bool KnownCertificates::isSigned(X509 *subject, X509 *issuer)
{
    const std::pair<const X509 *, const X509 *> pair(subject, issuer);
    {
        const std::lock_guard lock(m_mutex);
        if (m_signed.contains(pair))
            return true;
    }
    EVP_PKEY *const key = X509_get0_pubkey(issuer);
    if (!key || X509_verify(subject, key) != 1)
        return false;
    const std::lock_guard lock(m_mutex);
    m_signed.insert(pair);
    return true;
}

} // namespace morvane
