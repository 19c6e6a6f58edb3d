#include "ExportedRows.h"

#include "CheckRun.h"
#include "InputFile.h"
#include "Limits.h"

#include "attestation/evidence/BundledAllowlist.h"
#include "attestation/evidence/CaseText.h"
#include "attestation/evidence/ExportedProof.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Refusal = VeniceMeasurementAllowlist::Refusal;
using Turn = ProofExportFile::Turn;

// The servers to look the rows up in.
struct Accepted {
    VeniceMeasurementAllowlist allowlist = BundledAllowlist::ofThisBuild();
    std::optional<VeniceSignedMeasurementList> named; // by the command line

    // All of a named list counts: which of it had run out or was withdrawn at which row is not in question.
    static Accepted of(const Options &options)
    {
        Accepted accepted;
        if (options.acceptedList.isEmpty())
            return accepted;
        accepted.named = InputFile::acceptedList(options.acceptedList);
        accepted.allowlist = {};
        for (const auto &entry : accepted.named->entries)
            accepted.allowlist.stacksByModel[entry.model].push_back(entry.stack);
        return accepted;
    }

    [[nodiscard]] QString text() const
    {
        return named ? u"the list you named, signature not checked (version %1)"_s.arg(named->listVersion)
                     : u"built into this program"_s;
    }
};

QString text(ProofExportFile::Rows rows)
{
    switch (rows) {
    case ProofExportFile::Rows::asExported:
        return u"as the file says they were exported"_s;
    case ProofExportFile::Rows::changed:
        return u"changed since the export"_s;
    case ProofExportFile::Rows::unstated:
        return u"the file doesn't say whether they changed"_s;
    }
    return {};
}

ProofExportFile readFile(const QString &path)
{
    const QByteArray json = InputFile::json(path);
    try {
        return ProofExportFile::read(json);
    } catch (const ProofExportFile::ReadError &error) {
        throw UsageError(u"%1 is no export of the proof ledger: %2"_s.arg(path, error.caseText()));
    }
}

QString orNone(const std::optional<QString> &text)
{
    return text ? CaseText::quoted(*text) : u"(none)"_s;
}

QString yesOrNo(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

void describe(Report &report, const Turn &turn)
{
    report.addField(u"ranAt"_s, turn.ranAt.toString(Qt::ISODate));
    for (const auto &[name, value] :
         {std::pair{u"where"_s, turn.where}, {u"model"_s, turn.model}, {u"result"_s, turn.result}})
        report.addField(name, CaseText::quoted(value));
    if (!turn.proof)
        return;
    report.addField(u"stack"_s, CaseText::quoted(turn.proof->stack));
    report.addField(u"verifiedThisTurn"_s, yesOrNo(turn.proof->verifiedThisTurn));
    report.addField(u"gpusVerifiedByThisMac"_s, QString::number(turn.proof->gpuCount));
    report.addField(u"gpuEvidenceRequired"_s, yesOrNo(turn.proof->requiresGPUEvidence));
    report.addField(u"teeProvider"_s, orNone(turn.proof->teeProvider));
    report.addField(u"serverClaimedVerified"_s, yesOrNo(turn.proof->serverClaimedVerified));
    report.addField(u"acceptedServersList"_s, orNone(turn.proof->acceptedServersList));
}

// What a row with a proof says that its quote doesn't, and how far it is checked all the same.
QStringList notSupported(bool isListed, bool isOfNamedList)
{
    QStringList lines{
        u"ranAt: nothing in the quote says when it was made; the certificates were valid then"_s,
        u"verifiedThisTurn: only that it fits the result"_s,
        u"gpusVerifiedByThisMac: the graphics reports aren't in the file; only that there were some where "
        "they are asked for"_s,
        u"teeProvider, serverClaimedVerified: the server's words, which count for nothing"_s,
        u"purpose, yourData, notice: this program's record"_s};
    if (!isListed)
        lines += u"stack, gpuEvidenceRequired, model: the list here doesn't name this image"_s;
    if (!isOfNamedList)
        lines += u"acceptedServersList: only that such a list may have counted then"_s;
    return lines + Limits::ofExport();
}

void checkProof(CheckRun &run, Report &report, ExportedProof::Inquiry &inquiry, const Accepted &accepted)
{
    for (const auto &check : ExportedProof::proofChecks())
        run.check(QString(check.claim), [&] { check.require(inquiry); });
    bool isListed = false;
    run.check(u"stack, gpuEvidenceRequired, model: the list has nothing against them"_s, [&] {
        isListed = ExportedProof::isListed(inquiry, accepted.allowlist);
        if (!isListed && accepted.named)
            throw Refusal(Refusal::Case::imageNotListed);
    });
    bool isOfNamedList = false;
    if (accepted.named)
        run.check(u"acceptedServersList: not the list's version with another day"_s, [&] {
            isOfNamedList = ExportedProof::isJudgedBy(*inquiry.turn.proof, accepted.named->listVersion,
                                                      accepted.named->notAfter);
        });
    report.setNotChecked(notSupported(isListed || !run.isGood(), isOfNamedList || !run.isGood()));
}

Report checkRow(const QJsonObject &object, std::size_t number, const Options &options,
                const Accepted &accepted)
{
    Report report(u"Row %1"_s.arg(number));
    CheckRun run(report);
    std::optional<Turn> turn;
    run.check(u"the row can be read"_s, [&] { turn = Turn::read(object); });
    if (!turn)
        return report;
    describe(report, *turn);
    ExportedProof::Inquiry inquiry{*turn, options.pins, {}};
    for (const auto &check : ExportedProof::rowChecks())
        run.check(QString(check.claim), [&] { check.require(inquiry); });
    if (turn->proof)
        checkProof(run, report, inquiry, accepted);
    else if (run.isGood())
        report.setVerdict(u"noProof"_s);
    return report;
}

} // namespace

void ExportedRows::check(const Options &options, Report &file)
{
    const ProofExportFile read = readFile(options.file);
    const Accepted accepted = Accepted::of(options);
    file.addField(u"exported"_s, read.exported.toString(Qt::ISODate));
    file.addField(u"rows"_s, text(read.rows));
    file.addField(u"accepted servers"_s, accepted.text());
    bool anyProof = false;
    QString failure;
    for (const QJsonObject &object : read.turns) {
        const std::size_t number = 1 + static_cast<std::size_t>(&object - read.turns.data());
        const Report row = checkRow(object, number, options, accepted);
        const bool isWithout = row.verdict() == "noProof"_L1;
        anyProof = anyProof || !isWithout;
        if (failure.isEmpty() && !row.isOk() && !isWithout)
            failure = CaseText::of("rowFailed"_L1, {QString::number(number), row.verdict()});
        file.addRow(row);
    }
    if (!anyProof)
        throw UsageError(u"%1 holds no proof"_s.arg(options.file));
    if (failure.isEmpty() && read.rows == ProofExportFile::Rows::changed)
        failure = u"rowsChanged"_s;
    file.setVerdict(failure.isEmpty() ? u"ok"_s : failure);
}

} // namespace morvane
