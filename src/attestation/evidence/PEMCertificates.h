#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <exception>
#include <memory>
#include <variant>
#include <vector>

using X509 = struct x509_st;

namespace morvane {

class KnownCertificates;

// PEM text to certificates, and a chain judged against one pinned root at a given date. Nothing else is
// trusted and nothing is fetched. Any thread.
namespace PEMCertificates {

// DER, leaf first.
using Chain = std::vector<QByteArray>;

class ChainError final : public std::exception {
public:
    struct RootNotPinned {
        QString sha256; // of the offered root, lower-case hexadecimal
        bool operator==(const RootNotPinned &) const = default;
    };
    struct ChainRejected {
        QString reason;
        bool operator==(const ChainRejected &) const = default;
    };
    struct MalformedCertificate {
        bool operator==(const MalformedCertificate &) const = default;
    };
    struct NoPublicKey {
        bool operator==(const NoPublicKey &) const = default;
    };
    using Case = std::variant<RootNotPinned, ChainRejected, MalformedCertificate, NoPublicKey>;

    ChainError(Case reason)
        : m_case(std::move(reason))
    {}

    [[nodiscard]] const Case &reason() const { return m_case; }
    bool operator==(const ChainError &other) const { return m_case == other.m_case; }

private:
    Case m_case;
};

// The certificates of a text in its order. A block that is not base64 or never ends is skipped; what lies
// between blocks doesn't count.
[[nodiscard]] Chain blocks(QStringView text);

// The same for bytes that should be UTF-8; bad sequences are replaced first.
[[nodiscard]] Chain blocks(QByteArrayView utf8);

// The first certificate of a chain, read once: reading costs more than checking a signature.
class Leaf {
public:
    explicit Leaf(std::shared_ptr<const X509> certificate)
        : m_certificate(std::move(certificate))
    {}

    // The point of an elliptic-curve key as X then Y. Throws ChainError::NoPublicKey for any other key.
    [[nodiscard]] QByteArray publicKey() const;

private:
    std::shared_ptr<const X509> m_certificate;
};

// Returns when `chain` leads from its first certificate to its last, that root is the pinned one, and all are
// valid at `date`. Throws ChainError. `pinnedRootSHA256` is hexadecimal in either letter case.
Leaf verifyChain(const Chain &chain, const QString &pinnedRootSHA256, const QDateTime &date);

// The same for one of several chains that share certificates. `known` spares work and changes no answer.
Leaf verifyChain(const Chain &chain, const QString &pinnedRootSHA256, const QDateTime &date,
                 KnownCertificates &known);

// The same key from a certificate that nobody has read yet. Throws ChainError::NoPublicKey also when it can't
// be read.
[[nodiscard]] QByteArray leafPublicKey(const QByteArray &certificate);

} // namespace PEMCertificates

} // namespace morvane
