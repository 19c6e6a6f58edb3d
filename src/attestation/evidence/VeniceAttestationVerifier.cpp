#include "attestation/evidence/VeniceAttestationVerifier.h"

#include "attestation/evidence/Keccak256.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

using VeniceAttestationVerifier::Failure;
using VeniceAttestationVerifier::Findings;
using VeniceAttestationVerifier::Question;
using Plain = VeniceAttestationVerifier::Failure::Plain;
using Refusal = VeniceMeasurementAllowlist::Refusal;

// The quote's report data: the address, zeros, our nonce.
constexpr qsizetype reportDataSize = 64;
constexpr qsizetype addressSize = 20;
constexpr qsizetype keyPartSize = 32;

void require(bool holds, Plain failure)
{
    if (!holds)
        throw Failure(failure);
}

void requireModel(const Question &q, Findings &)
{
    if (q.document.model != q.model)
        throw Failure(Failure::WrongModel{q.model, q.document.model});
}

void requireQuotePresent(const Question &q, Findings &)
{
    require(q.document.intelQuote.has_value(), Plain::noQuote);
}

void requireSigningKey(const Question &q, Findings &)
{
    require(q.document.signingPublicKey.has_value(), Plain::noSigningKey);
}

void requireEchoedNonce(const Question &q, Findings &)
{
    require(q.document.echoedNonce == q.nonce, Plain::nonceMismatch);
}

void requireAddress(const Question &q, Findings &found)
{
    const auto address = VeniceAttestationVerifier::addressOf(*q.document.signingPublicKey);
    require(address.has_value(), Plain::noSigningKey);
    found.address = *address;
}

void requireStatedAddress(const Question &q, Findings &found)
{
    const auto &stated = q.document.signingAddress;
    require(!stated || *stated == found.address, Plain::statedAddressDoesNotMatchKey);
}

void requireReadableQuote(const Question &q, Findings &found)
{
    try {
        found.quote = TDXQuote::parse(*q.document.intelQuote);
    } catch (const TDXQuote::ParseError &error) {
        throw Failure(Failure::QuoteMalformed{error});
    }
}

void requireBoundReportData(const Question &q, Findings &found)
{
    const QByteArray &data = found.quote.report.reportData;
    const QByteArray keyPart = found.address + QByteArray(keyPartSize - addressSize, '\0');
    require(data.size() == reportDataSize && data.startsWith(keyPart), Plain::reportDataDoesNotBindKey);
    require(QByteArrayView(data).sliced(keyPartSize) == q.nonce, Plain::reportDataDoesNotBindNonce);
}

void requireHardware(const Question &q, Findings &found)
{
    try {
        TDXQuoteVerifier::verify(found.quote, q.pins, q.date);
    } catch (const TDXQuoteVerifier::Failure &failure) {
        throw Failure(Failure::Quote{failure});
    }
}

void requireAcceptedServer(const Question &q, Findings &found)
{
    try {
        found.match = q.allowlist.match(found.quote.report, q.document.configurationText,
                                        q.document.instanceID, q.model);
    } catch (const Refusal &refusal) {
        if (refusal.reason() == Refusal::Case::imageNotListed)
            throw Failure(Failure::MeasurementsNotAllowed{q.model});
        throw Failure(Failure::Configuration{refusal});
    }
}

void requireGraphicsHardware(const Question &q, Findings &found)
{
    if (!found.match->stack.requiresGPUEvidence)
        return;
    const auto &payload = q.document.nvidiaPayload;
    require(payload && !q.document.gpuEvidenceOmitted, Plain::gpuEvidenceMissing);
    try {
        const auto evidence = NvidiaGPUEvidence::parse(*payload);
        evidence.verify(q.nonce, q.pins, q.date);
        found.gpuCount = static_cast<qsizetype>(evidence.gpus.size());
    } catch (const NvidiaGPUEvidence::Failure &failure) {
        throw Failure(Failure::GPUEvidence{failure});
    }
}

constexpr std::array<VeniceAttestationVerifier::DocumentCheck, 11> bindingOrder{{
    {"the server answers for the model asked for"_L1, requireModel},
    {"there is a quote"_L1, requireQuotePresent},
    {"there is a signing key"_L1, requireSigningKey},
    {"the server repeats our nonce"_L1, requireEchoedNonce},
    {"the signing key has an address"_L1, requireAddress},
    {"a stated address is the key's"_L1, requireStatedAddress},
    {"the quote can be read"_L1, requireReadableQuote},
    {"the quote binds the key and our nonce"_L1, requireBoundReportData},
    {"Intel's hardware stands behind the quote"_L1, requireHardware},
    {"the image and configuration are accepted"_L1, requireAcceptedServer},
    {"each graphics chip proves itself, where the stack asks for it"_L1, requireGraphicsHardware},
}};

} // namespace

std::optional<QByteArray> VeniceAttestationVerifier::addressOf(const QByteArray &signingKey)
{
    if (signingKey.size() != 65 || signingKey.front() != '\x04')
        return std::nullopt;
    return Keccak256::hash(QByteArrayView(signingKey).sliced(1)).last(addressSize);
}

std::span<const VeniceAttestationVerifier::DocumentCheck> VeniceAttestationVerifier::checks()
{
    return bindingOrder;
}

VeniceAttestationVerifier::Verified VeniceAttestationVerifier::verify(const Question &question)
{
    Findings findings;
    for (const DocumentCheck &check : checks())
        check.require(question, findings);
    return verified(question, findings);
}

VeniceAttestationVerifier::Verified VeniceAttestationVerifier::verified(const Question &question,
                                                                        const Findings &findings)
{
    const auto &document = question.document;
    const auto &report = findings.quote.report;
    const auto &match = findings.match.value();
    return {.model = question.model,
            .modelPublicKey = document.signingPublicKey.value(),
            .signingAddress = findings.address,
            .nonce = question.nonce,
            .stack = match.stack,
            .configurationLabel = match.configuration.label,
            .hostLabel = match.hostLabel,
            .mrtd = report.mrtd,
            .rtmr3 = report.rtmr3,
            .composeHash = report.composeHash(),
            .quote = document.intelQuote.value(),
            .verifiedGPUCount = findings.gpuCount,
            .teeProvider = document.teeProvider,
            .serverClaimedVerified = document.serverVerified,
            .verifiedAt = question.date,
            .acceptedList = question.allowlist.source};
}

QString VeniceAttestationVerifier::Verified::summary() const
{
    const QString gpus = verifiedGPUCount >= 1 ? u"%1 GPUs"_s.arg(verifiedGPUCount) : u"no GPU evidence"_s;
    return u"%1 on %2, %3, host %4, %5"_s.arg(model, stack.label, configurationLabel, hostLabel, gpus);
}
