#include "Description.h"

#include "CertificateText.h"

#include "attestation/evidence/CaseText.h"
#include "utils/bytes/Hex.h"

#include <algorithm>
#include <map>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

void addChain(Report &report, const PEMCertificates::Chain &chain, const QString &prefix)
{
    for (std::size_t i = 0; i < chain.size(); ++i)
        report.addField(u"%1certificate %2"_s.arg(prefix).arg(i + 1), CertificateText::of(chain[i]));
}

// The security version of the quoting enclave: 16 bits, little-endian, in its SGX report.
int enclaveVersion(const QByteArray &qeReport)
{
    constexpr qsizetype offset = 258;
    return static_cast<unsigned char>(qeReport[offset]) | static_cast<unsigned char>(qeReport[offset + 1])
                                                              << 8;
}

// The chip families that NVIDIA certifies as switches begin their certificates' names.
bool namesSwitch(const QString &commonName)
{
    static const QStringList families{u"LS10"_s, u"LR10"_s, u"SV10"_s, u"NVSWITCH"_s};
    const QString name = commonName.toUpper();
    return std::any_of(families.begin(), families.end(),
                       [&name](const QString &family) { return name.contains(family); });
}

} // namespace

void Description::add(Report &report, const TDXQuote &quote)
{
    const auto &r = quote.report;
    report.addField(u"version"_s, QString::number(quote.header.version));
    report.addField(u"attestation key type"_s, QString::number(quote.header.attestationKeyType));
    report.addField(u"TEE type"_s, QString::number(quote.header.teeType));
    const struct {
        QString name;
        QByteArray bytes;
    } rows[] = {{u"tee_tcb_svn"_s, r.teeTCBSVN},
                {u"mrseam"_s, quote.module.mrseam},
                {u"mrsignerseam"_s, quote.module.mrsignerseam},
                {u"seamattributes"_s, quote.module.seamAttributes},
                {u"tdattributes"_s, r.tdAttributes},
                {u"xfam"_s, r.xfam},
                {u"mrtd"_s, r.mrtd},
                {u"mrconfigid"_s, r.mrconfigid},
                {u"mrowner"_s, r.mrowner},
                {u"mrownerconfig"_s, r.mrownerconfig},
                {u"rtmr0"_s, r.rtmr0},
                {u"rtmr1"_s, r.rtmr1},
                {u"rtmr2"_s, r.rtmr2},
                {u"rtmr3"_s, r.rtmr3},
                {u"reportdata"_s, r.reportData},
                {u"quote signature"_s, quote.signature},
                {u"attestation key"_s, quote.attestationKey},
                {u"QE report"_s, quote.qeReport},
                {u"QE report signature"_s, quote.qeReportSignature},
                {u"QE auth data"_s, quote.qeAuthenticationData}};
    for (const auto &row : rows)
        report.addField(row.name, Hex::encode(row.bytes));
    const auto composeHash = r.composeHash();
    report.addField(u"compose hash"_s, composeHash ? Hex::encode(*composeHash) : u"(none in mrconfigid)"_s);
    report.addField(u"QE ISVSVN"_s, QString::number(enclaveVersion(quote.qeReport)));
    report.addField(u"FMSPC"_s, CertificateText::fmspc(quote.certificateChain.front()));
    addChain(report, quote.certificateChain, QString());
}

void Description::add(Report &report, const NvidiaGPUEvidence &evidence)
{
    report.addField(u"architecture"_s, CaseText::quoted(evidence.architecture));
    report.addField(u"nonce"_s, Hex::encode(evidence.nonce));
    report.addField(u"devices"_s, QString::number(evidence.gpus.size()));
    for (std::size_t i = 0; i < evidence.gpus.size(); ++i) {
        const auto &gpu = evidence.gpus[i];
        const QString prefix = u"device %1 "_s.arg(i);
        report.addField(prefix + u"architecture"_s, CaseText::quoted(gpu.architecture));
        report.addField(prefix + u"nonce"_s, Hex::encode(gpu.nonce));
        report.addField(prefix + u"report"_s, u"%1 bytes"_s.arg(gpu.report.size()));
        addChain(report, gpu.certificateChain, prefix);
    }
}

void Description::add(Report &report, const VeniceAttestationDocument &document)
{
    const auto hex = [&report](const QString &name, const std::optional<QByteArray> &bytes) {
        report.addField(name, bytes ? Hex::encode(*bytes) : u"(absent)"_s);
    };
    const auto text = [&report](const QString &name, const std::optional<QString> &value) {
        report.addField(name, value ? CaseText::quoted(*value) : u"(absent)"_s);
    };
    text(u"model"_s, document.model);
    report.addField(u"server says verified"_s, document.serverVerified ? u"yes"_s : u"no"_s);
    hex(u"nonce"_s, document.echoedNonce);
    hex(u"signing key"_s, document.signingPublicKey);
    hex(u"signing address"_s, document.signingAddress);
    text(u"TEE provider"_s, document.teeProvider);
    text(u"TEE hardware"_s, document.teeHardware);
    report.addField(u"GPU evidence"_s, document.gpuEvidenceOmitted ? u"left out by the server"_s
                                       : document.nvidiaPayload    ? u"present"_s
                                                                   : u"(absent)"_s);
    report.addField(u"configuration"_s, document.configurationText
                                            ? u"%1 bytes"_s.arg(document.configurationText->toUtf8().size())
                                            : u"(absent)"_s);
    hex(u"instance"_s, document.instanceID);
}

void Description::add(Report &report, const VeniceAttestationVerifier::Inquiry &inquiry)
{
    if (!inquiry.address.isEmpty())
        report.addField(u"address of the key"_s, Hex::encode(inquiry.address));
    if (!inquiry.quote.certificateChain.empty())
        add(report, inquiry.quote);
    if (!inquiry.match)
        return;
    report.addField(u"stack"_s, CaseText::quoted(inquiry.match->stack.label));
    report.addField(u"reviewed configuration"_s, CaseText::quoted(inquiry.match->configuration.label));
    report.addField(u"host"_s, inquiry.match->hostLabel);
    report.addField(u"GPUs checked"_s, QString::number(inquiry.gpuCount));
}

void Description::addWarnings(Report &report, const NvidiaGPUEvidence &evidence)
{
    std::map<QByteArray, std::size_t> seen;
    for (std::size_t i = 0; i < evidence.gpus.size(); ++i) {
        if (evidence.gpus[i].certificateChain.empty())
            continue;
        const QByteArray &leaf = evidence.gpus[i].certificateChain.front();
        const auto [first, isNew] = seen.emplace(leaf, i);
        if (!isNew)
            report.addRemark(
                u"WARNING: devices %1 and %2 show the same first certificate, so they may be one "
                "chip that answered twice."_s.arg(first->second)
                    .arg(i));
        const QString name = CertificateText::commonName(leaf);
        if (namesSwitch(name))
            report.addRemark(
                u"WARNING: device %1 is a switch by its first certificate (%2), not a graphics chip."_s.arg(i)
                    .arg(CaseText::quoted(name)));
    }
}

} // namespace morvane
