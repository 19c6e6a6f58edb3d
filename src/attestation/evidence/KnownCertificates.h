#pragma once

#include <QByteArray>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

using X509 = struct x509_st;

namespace morvane {

// Certificates that occur in more than one chain of a proof, as the upper ones of a server's devices do:
// equal bytes are read once, and a signature that has held for two certificates isn't computed again. One
// that fails is never remembered. Any thread may call any member.
class KnownCertificates {
public:
    // The certificate in these bytes, always the same object for the same bytes. Null unless they are exactly
    // one certificate.
    [[nodiscard]] std::shared_ptr<X509> read(const QByteArray &der);

    // Whether `subject` is signed with the key of `issuer`. Both come from read() of this object, so each
    // stands for all of its bytes.
    [[nodiscard]] bool isSigned(X509 *subject, X509 *issuer);

private:
    std::mutex m_mutex;
    std::map<QByteArray, std::shared_ptr<X509>> m_certificates; // guarded by m_mutex
    std::set<std::pair<const X509 *, const X509 *>> m_signed;   // subject, issuer; guarded by m_mutex
};

} // namespace morvane
