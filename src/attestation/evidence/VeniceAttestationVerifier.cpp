#include "attestation/evidence/VeniceAttestationVerifier.h"

#include "attestation/evidence/Keccak256.h"

#include <array>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using VeniceAttestationVerifier::Failure;
using VeniceAttestationVerifier::Inquiry;
using VeniceAttestationVerifier::Part;
using VeniceAttestationVerifier::Verified;
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

void requireModel(Inquiry &inquiry)
{
    if (inquiry.question.document.model != inquiry.question.model)
        throw Failure(Failure::WrongModel{inquiry.question.model, inquiry.question.document.model});
}

void requireQuotePresent(Inquiry &inquiry)
{
    require(inquiry.question.document.intelQuote.has_value(), Plain::noQuote);
}

void requireSigningKey(Inquiry &inquiry)
{
    require(inquiry.question.document.signingPublicKey.has_value(), Plain::noSigningKey);
}

void requireEchoedNonce(Inquiry &inquiry)
{
    require(inquiry.question.document.echoedNonce == inquiry.question.nonce, Plain::nonceMismatch);
}

void requireAddress(Inquiry &inquiry)
{
    const auto address = VeniceAttestationVerifier::addressOf(*inquiry.question.document.signingPublicKey);
    require(address.has_value(), Plain::noSigningKey);
    inquiry.address = *address;
}

void requireStatedAddress(Inquiry &inquiry)
{
    const auto &stated = inquiry.question.document.signingAddress;
    require(!stated || *stated == inquiry.address, Plain::statedAddressDoesNotMatchKey);
}

void requireReadableQuote(Inquiry &inquiry)
{
    try {
        inquiry.quote = TDXQuote::parse(*inquiry.question.document.intelQuote);
    } catch (const TDXQuote::ParseError &error) {
        throw Failure(Failure::QuoteMalformed{error});
    }
}

void requireBoundReportData(Inquiry &inquiry)
{
    const QByteArray &data = inquiry.quote.report.reportData;
    const QByteArray keyPart = inquiry.address + QByteArray(keyPartSize - addressSize, '\0');
    require(data.size() == reportDataSize && data.startsWith(keyPart), Plain::reportDataDoesNotBindKey);
    require(QByteArrayView(data).sliced(keyPartSize) == inquiry.question.nonce,
            Plain::reportDataDoesNotBindNonce);
}

void requireHardware(Inquiry &inquiry)
{
    try {
        TDXQuoteVerifier::verify(inquiry.quote, inquiry.question.pins, inquiry.question.date);
    } catch (const TDXQuoteVerifier::Failure &failure) {
        throw Failure(Failure::Quote{failure});
    }
}

void requireAcceptedImage(Inquiry &inquiry)
{
    const auto &question = inquiry.question;
    if (!question.allowlist.hasImage(inquiry.quote.report, question.model))
        throw Failure(Failure::MeasurementsNotAllowed{question.model});
}

void requireAcceptedConfiguration(Inquiry &inquiry)
{
    const auto &document = inquiry.question.document;
    try {
        inquiry.match = inquiry.question.allowlist.match(inquiry.quote.report, document.configurationText,
                                                         document.instanceID, inquiry.question.model);
    } catch (const Refusal &refusal) {
        throw Failure(Failure::Configuration{refusal});
    }
}

void requireGraphicsHardware(Inquiry &inquiry)
{
    if (!inquiry.match->stack.requiresGPUEvidence)
        return;
    const auto &payload = inquiry.question.document.nvidiaPayload;
    require(payload && !inquiry.question.document.gpuEvidenceOmitted, Plain::gpuEvidenceMissing);
    try {
        const auto evidence = NvidiaGPUEvidence::parse(*payload);
        evidence.verify(inquiry.question.nonce, inquiry.question.pins, inquiry.question.date,
                        inquiry.question.spread);
        inquiry.gpuCount = static_cast<qsizetype>(evidence.gpus.size());
    } catch (const NvidiaGPUEvidence::Failure &failure) {
        throw Failure(Failure::GPUEvidence{failure});
    }
}

constexpr std::array<Check<Inquiry>, 12> bindingOrder{{
    {"the server answers for the model asked for"_L1, requireModel},
    {"there is a quote"_L1, requireQuotePresent},
    {"there is a signing key"_L1, requireSigningKey},
    {"the server repeats our nonce"_L1, requireEchoedNonce},
    {"the signing key has an address"_L1, requireAddress},
    {"a stated address is the key's"_L1, requireStatedAddress},
    {"the quote can be read"_L1, requireReadableQuote},
    {"the quote binds the key and our nonce"_L1, requireBoundReportData},
    {"Intel's hardware stands behind the quote"_L1, requireHardware},
    {"the image is accepted"_L1, requireAcceptedImage},
    {"the configuration and what was booted are accepted"_L1, requireAcceptedConfiguration},
    {"each graphics report sent holds, where the stack asks for them"_L1, requireGraphicsHardware},
}};

// Where each part begins.
constexpr std::array<std::pair<decltype(Check<Inquiry>::require), Part>, 5> parts{{
    {requireModel, Part::key},
    {requireHardware, Part::hardware},
    {requireAcceptedImage, Part::baseSystem},
    {requireAcceptedConfiguration, Part::boot},
    {requireGraphicsHardware, Part::graphicsChips},
}};

Verified verified(const Inquiry &inquiry)
{
    const auto &document = inquiry.question.document;
    const auto &report = inquiry.quote.report;
    const auto &match = inquiry.match.value();
    return {.model = inquiry.question.model,
            .modelPublicKey = document.signingPublicKey.value(),
            .signingAddress = inquiry.address,
            .nonce = inquiry.question.nonce,
            .stack = match.stack,
            .configurationLabel = match.configuration.label,
            .hostLabel = match.hostLabel,
            .mrtd = report.mrtd,
            .rtmr3 = report.rtmr3,
            .composeHash = report.composeHash(),
            .quote = document.intelQuote.value(),
            .verifiedGPUCount = inquiry.gpuCount,
            .teeProvider = document.teeProvider,
            .serverClaimedVerified = document.serverVerified,
            .verifiedAt = inquiry.question.date,
            .acceptedList = inquiry.question.allowlist.source};
}

} // namespace

std::optional<QByteArray> VeniceAttestationVerifier::addressOf(const QByteArray &signingKey)
{
    if (signingKey.size() != 65 || signingKey.front() != '\x04')
        return std::nullopt;
    return Keccak256::hash(QByteArrayView(signingKey).sliced(1)).last(addressSize);
}

std::span<const Check<Inquiry>> VeniceAttestationVerifier::checks()
{
    return bindingOrder;
}

VeniceAttestationVerifier::Verified VeniceAttestationVerifier::verify(const Question &question,
                                                                      const Progress &progress)
{
    Inquiry inquiry{.question = question};
    for (const auto &check : checks()) {
        for (const auto &[first, part] : parts) {
            if (progress && check.require == first)
                progress(part);
        }
        check.require(inquiry);
    }
    return verified(inquiry);
}

QString VeniceAttestationVerifier::Verified::summary() const
{
    const QString gpus = verifiedGPUCount >= 1 ? u"%1 GPUs"_s.arg(verifiedGPUCount) : u"no GPU evidence"_s;
    return u"%1 on %2, %3, host %4, %5"_s.arg(model, stack.label, configurationLabel, hostLabel, gpus);
}

} // namespace morvane
