#include "Commands.h"

#include "CertificateText.h"

#include "attestation/evidence/BundledAllowlist.h"
#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/NvidiaGPUEvidence.h"
#include "attestation/evidence/TDXQuoteVerifier.h"
#include "attestation/evidence/VeniceAttestationVerifier.h"
#include "attestation/evidence/VeniceSignedMeasurementList.h"
#include "utils/bytes/Base64.h"
#include "utils/bytes/Hex.h"
#include "utils/text/Json.h"

#include <QFile>
#include <QJsonDocument>

#include <functional>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Result = Report::Result;

constexpr qint64 fileLimit = qint64{64} * 1024 * 1024; // bytes; real evidence is a few kilobytes

QByteArray contents(const QString &path)
{
    QFile file(path);
    const bool open = path == "-"_L1 ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!open)
        throw UsageError(u"%1 can't be read: %2"_s.arg(path, file.errorString()));
    QByteArray bytes = file.read(fileLimit + 1);
    if (bytes.size() > fileLimit)
        throw UsageError(u"%1 is larger than 64 MiB"_s.arg(path));
    return bytes;
}

// Runs checks in a row, reports each, and holds the first failure as the verdict.
class CheckRun {
public:
    explicit CheckRun(Report &report)
        : m_report(report)
    {
        m_report.setVerdict(u"ok"_s);
    }

    void check(const QString &claim, const std::function<void()> &require)
    {
        if (!m_report.isOk())
            return m_report.addCheck(claim, Result::NotReached);
        const QString failure = failureOf(require);
        m_report.addCheck(claim, failure.isEmpty() ? Result::Ok : Result::Failed);
        if (!failure.isEmpty())
            m_report.setVerdict(failure);
    }

    [[nodiscard]] bool isGood() const { return m_report.isOk(); }

private:
    static QString failureOf(const std::function<void()> &require)
    {
        try {
            require();
            return {};
        } catch (const TDXQuote::ParseError &error) {
            return error.caseText();
        } catch (const TDXQuoteVerifier::Failure &failure) {
            return failure.caseText();
        } catch (const NvidiaGPUEvidence::Failure &failure) {
            return failure.caseText();
        } catch (const VeniceAttestationDocument::DecodeError &error) {
            return error.caseText();
        } catch (const VeniceAttestationVerifier::Failure &failure) {
            return failure.caseText();
        } catch (const VeniceSignedMeasurementList::Refusal &refusal) {
            return refusal.caseText();
        } catch (const VeniceMeasurementAllowlist::Refusal &refusal) {
            return refusal.caseText();
        }
    }

    Report &m_report;
};

Report begin(const Options &options, const QString &what)
{
    Report report(u"%1, with certificates valid at %2"_s.arg(what, options.date.toString(Qt::ISODate)));
    for (const QString &pin : options.replacedPins)
        report.addRemark(
            u"WARNING: the %1 pin is replaced. This run proves nothing about real hardware."_s.arg(pin));
    return report;
}

void describe(Report &report, const PEMCertificates::Chain &chain, const QString &prefix)
{
    for (std::size_t i = 0; i < chain.size(); ++i)
        report.addField(u"%1certificate %2"_s.arg(prefix).arg(i + 1), CertificateText::of(chain[i]));
}

void describe(Report &report, const TDXQuote &quote)
{
    const auto &r = quote.report;
    report.addField(u"version"_s, QString::number(quote.header.version));
    report.addField(u"attestation key type"_s, QString::number(quote.header.attestationKeyType));
    report.addField(u"TEE type"_s, QString::number(quote.header.teeType));
    const struct {
        QString name;
        QByteArray bytes;
    } rows[] = {{u"tee_tcb_svn"_s, r.teeTCBSVN},
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
    describe(report, quote.certificateChain, QString());
}

// The bytes of a quote as the file writes it; nothing for text that doesn't decode.
std::optional<QByteArray> quoteBytes(const Options &options)
{
    const QByteArray file = contents(options.file);
    if (options.encoding == Options::Encoding::Raw)
        return file;
    QString text = QString::fromUtf8(file);
    text.removeIf([](QChar c) { return c.isSpace(); });
    return options.encoding == Options::Encoding::Hex ? Hex::decode(text) : Base64::decode(text.toUtf8());
}

Report checkQuote(const Options &options)
{
    Report report = begin(options, u"TDX quote"_s);
    CheckRun run(report);
    const auto bytes = quoteBytes(options);
    TDXQuote quote;
    run.check(u"the file holds a quote that can be read"_s, [&] {
        if (!bytes)
            throw VeniceAttestationDocument::DecodeError(
                VeniceAttestationDocument::DecodeError::Case::noQuote);
        quote = TDXQuote::parse(*bytes);
    });
    if (run.isGood())
        describe(report, quote);
    TDXQuoteVerifier::Inquiry inquiry{quote, options.pins, options.date, std::nullopt};
    for (const auto &check : TDXQuoteVerifier::checks())
        run.check(QString(check.claim), [&] { check.require(inquiry); });
    return report;
}

void describe(Report &report, const NvidiaGPUEvidence &evidence)
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
        describe(report, gpu.certificateChain, prefix);
    }
}

Report checkGPUs(const Options &options)
{
    Report report = begin(options, u"NVIDIA GPU evidence"_s);
    CheckRun run(report);
    NvidiaGPUEvidence evidence;
    const QString payload = QString::fromUtf8(contents(options.file));
    run.check(u"the file holds evidence that can be read"_s,
              [&] { evidence = NvidiaGPUEvidence::parse(payload); });
    if (run.isGood())
        describe(report, evidence);
    run.check(u"the payload answers our nonce"_s, [&] { evidence.requireNonce(options.nonce); });
    KnownCertificates known;
    for (std::size_t i = 0; i < evidence.gpus.size(); ++i) {
        NvidiaGPUEvidence::Inquiry inquiry{
            evidence.gpus[i], static_cast<qsizetype>(i), options.nonce, options.pins, options.date, known,
            std::nullopt};
        for (const auto &check : NvidiaGPUEvidence::deviceChecks())
            run.check(u"device %1: "_s.arg(i) + check.claim, [&] { check.require(inquiry); });
    }
    return report;
}

std::vector<VeniceBootEvent> readEvents(const QByteArray &json)
{
    using Refusal = VeniceSignedMeasurementList::Refusal;
    const auto document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        throw Refusal(Refusal::Plain::notJSON);
    std::vector<VeniceBootEvent> events;
    for (const QJsonValue &value : document.array()) {
        const QJsonValue payload = value["payload"_L1];
        if (!value["name"_L1].isString() ||
            !(payload.isString() || payload.isNull() || payload.isUndefined()))
            throw Refusal(Refusal::BadValue{u"bootEvents"_s});
        VeniceBootEvent event{value["name"_L1].toString(), std::nullopt};
        if (payload.isString())
            event.payload = payload.toString();
        events.push_back(event);
    }
    return events;
}

Report replayEvents(const Options &options)
{
    Report report(u"Boot events"_s);
    CheckRun run(report);
    const QByteArray file = contents(options.file);
    std::vector<VeniceBootEvent> events;
    std::optional<QByteArray> reg;
    run.check(u"the file holds boot events that can be read"_s, [&] { events = readEvents(file); });
    run.check(u"the events can be replayed"_s, [&] {
        reg = VeniceBootEvent::replay(events, options.composeHash, options.instanceID);
        if (!reg)
            throw VeniceMeasurementAllowlist::Refusal(
                VeniceMeasurementAllowlist::Refusal::Case::bootMeasurementMismatch);
    });
    for (std::size_t i = 0; i < events.size(); ++i) {
        const auto &event = events[i];
        report.addField(u"event %1"_s.arg(i + 1),
                        CaseText::quoted(event.name) + u" "_s +
                            (event.payload ? CaseText::quoted(*event.payload) : u"(live)"_s));
    }
    if (reg)
        report.addField(u"rtmr3"_s, Hex::encode(*reg));
    return report;
}

VeniceMeasurementAllowlist acceptedServers(const Options &options, Report &report, CheckRun &run)
{
    VeniceMeasurementAllowlist allowlist = BundledAllowlist::ofThisBuild();
    if (!options.acceptedList.isEmpty()) {
        const QByteArray file = contents(options.acceptedList);
        run.check(u"the list of accepted servers can be read"_s, [&] {
            allowlist = VeniceSignedMeasurementList::read(file, 0).allowlistAt(options.date, allowlist);
        });
        report.addRemark(u"The list's signature is not checked: it counts because you named it."_s);
    }
    if (allowlist.stacksByModel.empty())
        report.addRemark(u"The list of accepted servers is empty, so no server can pass."_s);
    return allowlist;
}

void describe(Report &report, const VeniceAttestationDocument &document)
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

void describe(Report &report, const VeniceAttestationVerifier::Inquiry &inquiry)
{
    if (!inquiry.address.isEmpty())
        report.addField(u"address of the key"_s, Hex::encode(inquiry.address));
    if (!inquiry.quote.certificateChain.empty())
        describe(report, inquiry.quote);
    if (!inquiry.match)
        return;
    report.addField(u"stack"_s, CaseText::quoted(inquiry.match->stack.label));
    report.addField(u"reviewed configuration"_s, CaseText::quoted(inquiry.match->configuration.label));
    report.addField(u"host"_s, inquiry.match->hostLabel);
    report.addField(u"GPUs checked"_s, QString::number(inquiry.gpuCount));
}

Report checkDocument(const Options &options)
{
    Report report = begin(options, u"Attestation document"_s);
    CheckRun run(report);
    VeniceAttestationVerifier::Question question{{}, options.model, options.nonce,
                                                 {}, options.pins,  options.date};
    question.allowlist = acceptedServers(options, report, run);
    const QByteArray file = contents(options.file);
    run.check(u"the document can be read"_s,
              [&] { question.document = VeniceAttestationDocument::decode(QByteArrayView(file)); });
    if (run.isGood())
        describe(report, question.document);
    report.addField(u"accepted servers"_s, question.allowlist.source.text());
    VeniceAttestationVerifier::Inquiry inquiry{.question = question};
    for (const auto &check : VeniceAttestationVerifier::checks())
        run.check(QString(check.claim), [&] { check.require(inquiry); });
    describe(report, inquiry);
    return report;
}

} // namespace

Report Commands::run(const Options &options)
{
    switch (options.command) {
    case Options::Command::Quote:
        return checkQuote(options);
    case Options::Command::GPU:
        return checkGPUs(options);
    case Options::Command::Replay:
        return replayEvents(options);
    case Options::Command::Document:
        return checkDocument(options);
    case Options::Command::Help:
        break;
    }
    throw UsageError(u"there is nothing to check"_s);
}

} // namespace morvane
