#pragma once

#include "attestation/evidence/Check.h"
#include "attestation/evidence/EvidencePins.h"
#include "attestation/evidence/TDXQuote.h"

#include <span>

namespace morvane {

// Whether Intel's hardware stands behind a quote: its signatures, its certificates and the enclave that made
// it. What the quote measures is judged elsewhere. Any thread.
namespace TDXQuoteVerifier {

class Failure final : public std::exception {
public:
    struct QuotingEnclaveNotIntel {
        QString reason;
        bool operator==(const QuotingEnclaveNotIntel &) const = default;
    };
    struct CertificateChain {
        QString reason;
        bool operator==(const CertificateChain &) const = default;
    };
    struct QuoteSignatureInvalid {
        bool operator==(const QuoteSignatureInvalid &) const = default;
    };
    struct QuotingEnclaveSignatureInvalid {
        bool operator==(const QuotingEnclaveSignatureInvalid &) const = default;
    };
    struct AttestationKeyNotBoundToQuotingEnclave {
        bool operator==(const AttestationKeyNotBoundToQuotingEnclave &) const = default;
    };
    struct DebugEnclave {
        bool operator==(const DebugEnclave &) const = default;
    };
    using Case =
        std::variant<QuotingEnclaveNotIntel, CertificateChain, QuoteSignatureInvalid,
                     QuotingEnclaveSignatureInvalid, AttestationKeyNotBoundToQuotingEnclave, DebugEnclave>;

    Failure(Case reason)
        : m_case(std::move(reason))
    {}

    [[nodiscard]] const Case &reason() const { return m_case; }
    [[nodiscard]] QString caseText() const;
    bool operator==(const Failure &other) const { return m_case == other.m_case; }

private:
    Case m_case;
};

struct Inquiry {
    const TDXQuote &quote;
    const EvidencePins &pins;
    const QDateTime &date;
    std::optional<PEMCertificates::Leaf> leaf; // once its chain has been verified
};

// In the order that decides which failure a bad quote reports. Each throws Failure.
[[nodiscard]] std::span<const Check<Inquiry>> checks();

// Runs all checks for certificates that must be valid at `date`. Throws the first Failure.
void verify(const TDXQuote &quote, const EvidencePins &pins, const QDateTime &date);

} // namespace TDXQuoteVerifier

} // namespace morvane
