#include "attestation/evidence/NvidiaGPUEvidence.h"

#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/ECDSASignature.h"
#include "utils/bytes/Base64.h"
#include "utils/bytes/Hex.h"
#include "utils/text/Json.h"

#include <array>
#include <atomic>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Failure = NvidiaGPUEvidence::Failure;
using GPU = NvidiaGPUEvidence::GPU;
using Inquiry = NvidiaGPUEvidence::Inquiry;
using PEMCertificates::ChainError;

constexpr qsizetype reportHeaderSize = 4;
constexpr qsizetype signatureSize = 96;

template <typename T>
T requireWellFormed(std::optional<T> value)
{
    if (!value)
        throw Failure(Failure::MalformedPayload{});
    return *std::move(value);
}

QString requireString(const QJsonObject &object, QLatin1StringView key)
{
    return requireWellFormed(Json::string(object, key));
}

QByteArray hexBytes(const QJsonObject &object, QLatin1StringView key)
{
    return requireWellFormed(Hex::decode(requireString(object, key)));
}

QByteArray base64Bytes(const QJsonObject &object, QLatin1StringView key)
{
    return requireWellFormed(Base64::decode(requireString(object, key).toUtf8()));
}

GPU readGPU(const QJsonObject &object, const QString &defaultArchitecture)
{
    GPU gpu;
    gpu.report = base64Bytes(object, "evidence"_L1);
    const QByteArray certificates = base64Bytes(object, "certificate"_L1);
    gpu.nonce = hexBytes(object, "nonce"_L1);
    gpu.architecture = Json::string(object, "arch"_L1).value_or(defaultArchitecture);
    gpu.certificateChain = PEMCertificates::blocks(QByteArrayView(certificates));
    return gpu;
}

void requireDeviceNonce(Inquiry &inquiry)
{
    if (inquiry.gpu.nonce != inquiry.expectedNonce)
        throw Failure(Failure::NonceMismatch{inquiry.index});
}

void requireNonceInReport(Inquiry &inquiry)
{
    const QByteArrayView report(inquiry.gpu.report);
    const qsizetype length = inquiry.expectedNonce.size();
    if (report.size() <= reportHeaderSize + length + signatureSize ||
        report.sliced(reportHeaderSize, length) != inquiry.expectedNonce)
        throw Failure(Failure::NonceNotInReport{inquiry.index});
}

QString chainReason(const ChainError &error)
{
    if (const auto *root = std::get_if<ChainError::RootNotPinned>(&error.reason()))
        return u"the chain ends at an unexpected root (%1)"_s.arg(root->sha256.left(16));
    if (const auto *rejected = std::get_if<ChainError::ChainRejected>(&error.reason()))
        return rejected->reason;
    return u"the certificate chain did not verify"_s;
}

void requireCertificateChain(Inquiry &inquiry)
{
    try {
        inquiry.leaf = PEMCertificates::verifyChain(
            inquiry.gpu.certificateChain, inquiry.pins.nvidiaRootSHA256, inquiry.date, inquiry.known);
    } catch (const ChainError &error) {
        throw Failure(Failure::CertificateChain{inquiry.index, chainReason(error)});
    } catch (const std::exception &) {
        throw Failure(Failure::CertificateChain{inquiry.index, u"the certificate chain did not verify"_s});
    }
}

bool signatureHolds(QByteArrayView report, const PEMCertificates::Leaf &leaf)
{
    try {
        return ECDSASignature::isValid(ECDSASignature::Curve::P384, leaf.publicKey(),
                                       report.last(signatureSize), report.chopped(signatureSize));
    } catch (const ChainError &) {
        return false;
    }
}

void requireSignature(Inquiry &inquiry)
{
    if (!inquiry.leaf || !signatureHolds(inquiry.gpu.report, *inquiry.leaf))
        throw Failure(Failure::SignatureInvalid{inquiry.index});
}

constexpr std::array<Check<Inquiry>, 4> bindingOrder{{
    {"the device answered our nonce"_L1, requireDeviceNonce},
    {"the signed report holds our nonce"_L1, requireNonceInReport},
    {"the certificates lead to NVIDIA's pinned root and are valid at the date"_L1, requireCertificateChain},
    {"the report is signed by the first certificate"_L1, requireSignature},
}};

// Checks every device and keeps the failure of the first that has one. A device behind one that is known to
// have failed can't change the answer and is left out.
std::exception_ptr firstFailure(const std::vector<GPU> &gpus, const QByteArray &expectedNonce,
                                const EvidencePins &pins, const QDateTime &date,
                                const NvidiaGPUEvidence::Spread &spread)
{
    KnownCertificates known;
    std::vector<std::exception_ptr> failures(gpus.size());
    std::atomic<std::size_t> firstFailed = gpus.size();
    spread(gpus.size(), [&](std::size_t i) {
        if (i > firstFailed)
            return;
        Inquiry inquiry{gpus[i], static_cast<qsizetype>(i), expectedNonce, pins, date, known, std::nullopt};
        try {
            for (const auto &check : bindingOrder)
                check.require(inquiry);
        } catch (...) {
            failures[i] = std::current_exception();
            std::size_t lowest = firstFailed;
            while (i < lowest && !firstFailed.compare_exchange_weak(lowest, i)) {
            }
        }
    });
    return firstFailed < gpus.size() ? failures[firstFailed] : nullptr;
}

struct CaseTextOf {
    QString operator()(const Failure::NonceMismatch &e) const
    {
        return CaseText::of("nonceMismatch"_L1, {QString::number(e.gpuIndex)});
    }
    QString operator()(const Failure::NonceNotInReport &e) const
    {
        return CaseText::of("nonceNotInReport"_L1, {QString::number(e.gpuIndex)});
    }
    QString operator()(const Failure::SignatureInvalid &e) const
    {
        return CaseText::of("signatureInvalid"_L1, {QString::number(e.gpuIndex)});
    }
    QString operator()(const Failure::CertificateChain &e) const
    {
        return CaseText::of("certificateChain"_L1, {QString::number(e.gpuIndex), CaseText::quoted(e.reason)});
    }
    QString operator()(const Failure::MalformedPayload &) const
    {
        return CaseText::of("malformedPayload"_L1);
    }
    QString operator()(const Failure::NoEvidence &) const { return CaseText::of("noEvidence"_L1); }
};

} // namespace

QString NvidiaGPUEvidence::Failure::caseText() const
{
    return std::visit(CaseTextOf{}, m_case);
}

NvidiaGPUEvidence NvidiaGPUEvidence::parse(const QString &payload)
{
    const QJsonObject object = requireWellFormed(Json::parseObject(payload.toUtf8()));
    NvidiaGPUEvidence evidence;
    evidence.nonce = hexBytes(object, "nonce"_L1);
    const auto list = requireWellFormed(Json::objects(object, "evidence_list"_L1));
    evidence.architecture = Json::string(object, "arch"_L1).value_or(u"unknown"_s);
    if (list.empty())
        throw Failure(Failure::NoEvidence{});
    evidence.gpus.reserve(list.size());
    for (const QJsonObject &element : list)
        evidence.gpus.push_back(readGPU(element, evidence.architecture));
    return evidence;
}

void NvidiaGPUEvidence::inTurn(std::size_t count, const Piece &piece)
{
    for (std::size_t i = 0; i < count; ++i)
        piece(i);
}

void NvidiaGPUEvidence::verify(const QByteArray &expectedNonce, const EvidencePins &pins,
                               const QDateTime &date, const Spread &spread) const
{
    requireNonce(expectedNonce);
    if (const auto failure = firstFailure(gpus, expectedNonce, pins, date, spread))
        std::rethrow_exception(failure);
}

void NvidiaGPUEvidence::requireNonce(const QByteArray &expectedNonce) const
{
    if (nonce != expectedNonce)
        throw Failure(Failure::NonceMismatch{-1});
}

std::span<const Check<Inquiry>> NvidiaGPUEvidence::deviceChecks()
{
    return bindingOrder;
}

} // namespace morvane
