#include "Commands.h"

#include "BootLog.h"
#include "CheckRun.h"
#include "Description.h"
#include "ExportedRows.h"
#include "InputFile.h"
#include "Limits.h"

#include "attestation/evidence/BundledAllowlist.h"
#include "attestation/evidence/CaseText.h"
#include "utils/bytes/Hex.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

Report begin(const Options &options, const QString &title, const QStringList &notChecked)
{
    Report report(title);
    report.setNotChecked(notChecked);
    for (const QString &pin : options.replacedPins)
        report.addRemark(
            u"WARNING: the %1 pin is replaced. This run proves nothing about real hardware."_s.arg(pin));
    return report;
}

QString atDate(const Options &options, const QString &what)
{
    return u"%1, with certificates valid at %2"_s.arg(what, options.date.toString(Qt::ISODate));
}

Report checkQuote(const Options &options)
{
    Report report = begin(options, atDate(options, u"TDX quote"_s), Limits::ofQuote());
    CheckRun run(report);
    const QByteArray bytes = InputFile::quote(options);
    TDXQuote quote;
    run.check(u"the file holds a quote that can be read"_s, [&] { quote = TDXQuote::parse(bytes); });
    if (run.isGood())
        Description::add(report, quote);
    TDXQuoteVerifier::Inquiry inquiry{quote, options.pins, options.date, std::nullopt};
    for (const auto &check : TDXQuoteVerifier::checks())
        run.check(QString(check.claim), [&] { check.require(inquiry); });
    return report;
}

Report checkGPUs(const Options &options)
{
    Report report = begin(options, atDate(options, u"NVIDIA GPU evidence"_s), Limits::ofGPUs());
    CheckRun run(report);
    NvidiaGPUEvidence evidence;
    const QString payload = QString::fromUtf8(InputFile::json(options.file));
    run.check(u"the file holds evidence that can be read"_s,
              [&] { evidence = NvidiaGPUEvidence::parse(payload); });
    if (run.isGood())
        Description::add(report, evidence);
    Description::addWarnings(report, evidence);
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

// The value of a live event: the log's own, the command line's, or both where they agree.
QByteArray liveValue(CheckRun &run, const QString &name, const std::optional<QByteArray> &logged,
                     const std::optional<QByteArray> &named)
{
    if (!logged && !named)
        throw UsageError(u"the file holds no value of %1, so replay needs --%1"_s.arg(name));
    if (logged && named) {
        run.check(u"the log's %1 is the one named"_s.arg(name), [&] {
            if (*logged != *named)
                throw VeniceMeasurementAllowlist::Refusal(
                    VeniceMeasurementAllowlist::Refusal::Case::bootMeasurementMismatch);
        });
    }
    return logged ? *logged : *named;
}

void describe(Report &report, const std::vector<VeniceBootEvent> &events, const QByteArray &reg)
{
    for (std::size_t i = 0; i < events.size(); ++i) {
        const auto &event = events[i];
        report.addField(u"event %1"_s.arg(i + 1),
                        CaseText::quoted(event.name) + u" "_s +
                            (event.payload ? CaseText::quoted(*event.payload) : u"(live)"_s));
    }
    report.addField(u"rtmr3"_s, Hex::encode(reg));
}

Report replayEvents(const Options &options)
{
    Report report(options.rtmr3 ? u"Boot events, held against a register"_s
                                : u"Boot events, computed only"_s);
    report.setNotChecked(Limits::ofReplay());
    CheckRun run(report);
    const BootLog log = BootLog::read(InputFile::json(options.file), options.file);
    const QByteArray composeHash = liveValue(run, u"compose-hash"_s, log.composeHash, options.composeHash);
    const QByteArray instanceID = liveValue(run, u"instance-id"_s, log.instanceID, options.instanceID);
    const auto reg = VeniceBootEvent::replay(log.events, composeHash, instanceID);
    if (!reg)
        throw UsageError(u"the events can't be replayed: each needs a name without a colon and a payload in "
                         "hexadecimal, with compose-hash (32 bytes) and instance-id (20 bytes) once each"_s);
    describe(report, log.events, *reg);
    if (!options.rtmr3) {
        report.addRemark(
            u"A computation, no check: without --rtmr3 the register is compared with nothing."_s);
        return report;
    }
    run.check(u"the events lead to the register named"_s, [&] {
        if (*reg != *options.rtmr3)
            throw VeniceMeasurementAllowlist::Refusal(
                VeniceMeasurementAllowlist::Refusal::Case::bootMeasurementMismatch);
    });
    return report;
}

VeniceMeasurementAllowlist acceptedServers(const Options &options, Report &report)
{
    VeniceMeasurementAllowlist allowlist = BundledAllowlist::ofThisBuild();
    QString source = allowlist.source.text();
    if (!options.acceptedList.isEmpty()) {
        const auto list = InputFile::acceptedList(options.acceptedList);
        const bool hasRunOut = options.date >= list.notAfter;
        allowlist = list.allowlistAt(options.date, allowlist);
        source =
            u"the list you named, signature not checked (version %1, good until %2)%3"_s.arg(list.listVersion)
                .arg(list.notAfter.toString(Qt::ISODate),
                     hasRunOut ? u"; it has run out, so the servers built into this program count"_s
                               : QString());
    }
    report.addField(u"accepted servers"_s, source);
    if (allowlist.stacksByModel.empty())
        report.addRemark(u"The list of accepted servers is empty, so no server can pass."_s);
    return allowlist;
}

// Only where the evidence counts for the verdict.
void warnOfGraphics(Report &report, const VeniceAttestationVerifier::Inquiry &inquiry)
{
    const auto &payload = inquiry.question.document.nvidiaPayload;
    if (!payload || !inquiry.match || !inquiry.match->stack.requiresGPUEvidence)
        return;
    try {
        Description::addWarnings(report, NvidiaGPUEvidence::parse(*payload));
    } catch (const NvidiaGPUEvidence::Failure &) {
        // The verdict says so already.
    }
}

Report checkDocument(const Options &options)
{
    Report report = begin(options, atDate(options, u"Attestation document"_s), Limits::ofDocument());
    CheckRun run(report);
    VeniceAttestationVerifier::Question question{{}, options.model, options.nonce,
                                                 {}, options.pins,  options.date};
    question.allowlist = acceptedServers(options, report);
    const QByteArray file = InputFile::json(options.file);
    run.check(u"the document can be read"_s,
              [&] { question.document = VeniceAttestationDocument::decode(QByteArrayView(file)); });
    if (run.isGood())
        Description::add(report, question.document);
    VeniceAttestationVerifier::Inquiry inquiry{.question = question};
    for (const auto &check : VeniceAttestationVerifier::checks())
        run.check(QString(check.claim), [&] { check.require(inquiry); });
    Description::add(report, inquiry);
    warnOfGraphics(report, inquiry);
    return report;
}

Report checkExport(const Options &options)
{
    Report report = begin(options, u"Exported proofs, each judged at the time of its row"_s, {});
    ExportedRows::check(options, report);
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
    case Options::Command::Export:
        return checkExport(options);
    case Options::Command::Help:
    case Options::Command::Version:
        break;
    }
    throw UsageError(u"there is nothing to check"_s);
}

} // namespace morvane
