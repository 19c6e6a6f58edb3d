#include "attestation/evidence/TDXQuoteVerifier.h"

#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/Digest.h"
#include "attestation/evidence/ECDSASignature.h"
#include "utils/bytes/Hex.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using ECDSASignature::Curve;
using PEMCertificates::ChainError;
using TDXQuoteVerifier::Failure;
using TDXQuoteVerifier::Inquiry;

// The quoting enclave's SGX report body.
constexpr qsizetype qeReportSize = 384;
constexpr qsizetype qeAttributesOffset = 48;
constexpr qsizetype qeSignerOffset = 128;
constexpr qsizetype qeSignerSize = 32;
constexpr qsizetype qeProductOffset = 256;
constexpr qsizetype qeReportDataSize = 64; // the report's last bytes
constexpr int enclaveDebugBit = 0x02;
constexpr int trustDomainDebugBit = 0x01;
constexpr int tdxQuotingEnclaveProduct = 2;

struct ChainReason {
    QString operator()(const ChainError::RootNotPinned &e) const
    {
        return u"the chain ends at an unexpected root (%1)"_s.arg(e.sha256.left(16));
    }
    QString operator()(const ChainError::ChainRejected &e) const { return e.reason; }
    QString operator()(const ChainError::MalformedCertificate &) const
    {
        return u"a certificate in the chain could not be read"_s;
    }
    QString operator()(const ChainError::NoPublicKey &) const
    {
        return u"the leaf certificate carries no usable public key"_s;
    }
};

void requireNoDebug(Inquiry &inquiry)
{
    const QByteArray &attributes = inquiry.quote.report.tdAttributes;
    if (attributes.isEmpty() || (attributes[0] & trustDomainDebugBit) != 0)
        throw Failure(Failure::DebugEnclave{});
}

void requireQuoteSignature(Inquiry &inquiry)
{
    const TDXQuote &quote = inquiry.quote;
    if (!ECDSASignature::isValid(Curve::P256, quote.attestationKey, quote.signature, quote.signedBody))
        throw Failure(Failure::QuoteSignatureInvalid{});
}

void requireCertificateChain(Inquiry &inquiry)
{
    try {
        inquiry.leaf = PEMCertificates::verifyChain(inquiry.quote.certificateChain,
                                                    inquiry.pins.intelRootSHA256, inquiry.date);
    } catch (const ChainError &error) {
        throw Failure(Failure::CertificateChain{std::visit(ChainReason{}, error.reason())});
    } catch (const std::exception &) {
        throw Failure(Failure::CertificateChain{u"the certificate chain did not verify"_s});
    }
}

bool quotingEnclaveSignatureHolds(const TDXQuote &quote, const PEMCertificates::Leaf &leaf)
{
    try {
        return ECDSASignature::isValid(Curve::P256, leaf.publicKey(), quote.qeReportSignature,
                                       quote.qeReport);
    } catch (const ChainError &) {
        return false;
    }
}

void requireQuotingEnclaveSignature(Inquiry &inquiry)
{
    if (!inquiry.leaf || !quotingEnclaveSignatureHolds(inquiry.quote, *inquiry.leaf))
        throw Failure(Failure::QuotingEnclaveSignatureInvalid{});
}

void requireKeyBinding(Inquiry &inquiry)
{
    const TDXQuote &quote = inquiry.quote;
    const QByteArray bound = Digest::sha256({quote.attestationKey, quote.qeAuthenticationData}) +
                             QByteArray(qeReportDataSize - 32, '\0');
    if (quote.qeReport.size() < qeReportDataSize || quote.qeReport.last(qeReportDataSize) != bound)
        throw Failure(Failure::AttestationKeyNotBoundToQuotingEnclave{});
}

// Nothing when the report is of the pinned quoting enclave.
std::optional<QString> foreignEnclaveReason(const QByteArray &report, const EvidencePins &pins)
{
    if (report.size() < qeReportSize)
        return u"the quoting enclave's report is too short to read"_s;
    if ((report[qeAttributesOffset] & enclaveDebugBit) != 0)
        return u"the quoting enclave is in debug mode"_s;
    const QString signer = Hex::encode(QByteArrayView(report).sliced(qeSignerOffset, qeSignerSize));
    if (signer != pins.quotingEnclaveSigner)
        return u"the quoting enclave was signed by %1, not by Intel"_s.arg(signer.left(16));
    const int product = static_cast<unsigned char>(report[qeProductOffset]) |
                        static_cast<unsigned char>(report[qeProductOffset + 1]) << 8;
    if (product != tdxQuotingEnclaveProduct)
        return u"the quoting enclave is Intel product %1, not the TDX quoting enclave"_s.arg(product);
    return std::nullopt;
}

void requireQuotingEnclaveIdentity(Inquiry &inquiry)
{
    if (const auto reason = foreignEnclaveReason(inquiry.quote.qeReport, inquiry.pins))
        throw Failure(Failure::QuotingEnclaveNotIntel{*reason});
}

constexpr std::array<Check<Inquiry>, 6> bindingOrder{{
    {"the trust domain is not in debug mode"_L1, requireNoDebug},
    {"the quote is signed by its attestation key"_L1, requireQuoteSignature},
    {"the certificates lead to Intel's pinned root and are valid at the date"_L1, requireCertificateChain},
    {"the quoting enclave's report is signed by the first certificate"_L1, requireQuotingEnclaveSignature},
    {"the quoting enclave's report names the attestation key"_L1, requireKeyBinding},
    {"the quoting enclave is Intel's, for TDX, not in debug mode"_L1, requireQuotingEnclaveIdentity},
}};

struct CaseTextOf {
    QString operator()(const Failure::QuotingEnclaveNotIntel &e) const
    {
        return CaseText::of("quotingEnclaveNotIntel"_L1, {CaseText::quoted(e.reason)});
    }
    QString operator()(const Failure::CertificateChain &e) const
    {
        return CaseText::of("certificateChain"_L1, {CaseText::quoted(e.reason)});
    }
    QString operator()(const Failure::QuoteSignatureInvalid &) const
    {
        return CaseText::of("quoteSignatureInvalid"_L1);
    }
    QString operator()(const Failure::QuotingEnclaveSignatureInvalid &) const
    {
        return CaseText::of("quotingEnclaveSignatureInvalid"_L1);
    }
    QString operator()(const Failure::AttestationKeyNotBoundToQuotingEnclave &) const
    {
        return CaseText::of("attestationKeyNotBoundToQuotingEnclave"_L1);
    }
    QString operator()(const Failure::DebugEnclave &) const { return CaseText::of("debugEnclave"_L1); }
};

} // namespace

QString TDXQuoteVerifier::Failure::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

std::span<const Check<Inquiry>> TDXQuoteVerifier::checks()
{
    return bindingOrder;
}

void TDXQuoteVerifier::verify(const TDXQuote &quote, const EvidencePins &pins, const QDateTime &date)
{
    Inquiry inquiry{quote, pins, date, std::nullopt};
    for (const auto &check : checks())
        check.require(inquiry);
}

} // namespace morvane
