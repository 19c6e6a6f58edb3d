#include "attestation/ProofLedger.h"
#include "evidence/TestAuthority.h"
#include "support/TestData.h"
#include "utils/bytes/Hex.h"
#include "utils/text/UniversalTime.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

struct Outcome {
    int status = -1;
    QByteArray output;
    QByteArray errors;

    [[nodiscard]] std::string lastLine() const { return output.trimmed().split('\n').last().toStdString(); }
};

// With one thing of it otherwise, as little as can be.
QJsonValue bent(const QJsonValue &value, qsizetype at)
{
    if (value.isBool())
        return !value.toBool();
    if (value.isDouble())
        return value.toInt() + 1;
    QString text = value.toString();
    const QChar c = text[at]; // a digit stays one, and so does a hexadecimal one
    text[at] = c.isDigit() ? QChar(c.unicode() ^ 1U) : c == u'a' ? u'b' : u'a';
    return text;
}

// The program itself, over minted files in a folder of its own.
class ProofProgramTest : public testing::Test {
protected:
    void write(const QString &name, const QByteArray &contents)
    {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

    // The words of a command line, in which "@name" stands for the path of a file, NONCE and the like for the
    // good values, and OTHER for 32 bytes that are none of them.
    Outcome run(QString words, const QString &output = {}) const
    {
        words.replace(u'@', m_folder.path() + u'/')
            .replace("NONCE"_L1, Hex::encode(scenario.nonce))
            .replace("INSTANCE"_L1, Hex::encode(scenario.instanceID))
            .replace("COMPOSE"_L1, Hex::encode(composeHash()))
            .replace("RTMR3"_L1, Hex::encode(TDXQuote::parse(scenario.quoteBytes()).report.rtmr3))
            .replace("OTHEROTHER"_L1, QString(96, u'7'))
            .replace("OTHER"_L1, QString(64, u'7'));
        QProcess process;
        if (!output.isEmpty())
            process.setStandardOutputFile(output);
        process.start(QStringLiteral(MORVANE_PROOF), words.split(u' ', Qt::SkipEmptyParts));
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(60000));
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    // The test authority's pins.
    QString pinned() const
    {
        const EvidencePins &pins = scenario.pins;
        return u"--pin intel-root=%1 --pin quoting-enclave=%2 --pin nvidia-root=%3 "_s.arg(
            pins.intelRootSHA256, pins.quotingEnclaveSigner.toUpper(), pins.nvidiaRootSHA256);
    }

    // With those, at a date when its certificates are valid; a later --at counts.
    Outcome runPinned(const QString &words, const QString &output = {}) const
    {
        return run(u"--at 2026-09-01T12:00Z "_s + pinned() + words, output);
    }

    // A ledger's file: a proof made for its turn, the same one used later, one that was refused, and one of
    // each place that needs none.
    QJsonObject exported() const
    {
        using Kind = ProofLedger::Place::Kind;
        auto verified = VeniceAttestationVerifier::verify(scenario.question());
        verified.acceptedList = VeniceMeasurementAllowlist::Source(
            VeniceMeasurementAllowlist::Source::SignedList{3, scenario.date.addDays(91)});
        const auto proof = ProofLedger::Attestation::of(verified);
        ProofLedger ledger;
        for (const int age : {0, 1799})
            ledger.append({.startedAt = scenario.date.addSecs(age),
                           .place = {Kind::verifiedEnclave, scenario.model, {}},
                           .attestation = proof,
                           .acceptedServersList = verified.acceptedList.text()});
        ledger.append({.startedAt = scenario.date,
                       .place = {Kind::enclaveRefused, scenario.model, {}},
                       .note = u"refused"_s});
        for (const Kind kind :
             {Kind::thisMac, Kind::network, Kind::morvaneCloud, Kind::yourOwnService, Kind::ollamaCloud})
            ledger.append({.startedAt = scenario.date, .place = {kind, u"m"_s, u"host"_s}});
        return QJsonDocument::fromJson(ledger.exportData(scenario.date, {})).object();
    }

    // As a list holds them, and as a server logs them, in which "host" is of another register.
    void writeBootEvents()
    {
        QJsonArray events = scenario.signedList()["entries"_L1][0]["bootEvents"_L1].toArray();
        write(u"events"_s, QJsonDocument(events).toJson());
        QJsonArray log{QJsonObject{{u"imr"_s, 0}, {u"event_type"_s, 1}, {u"event"_s, u"host"_s}}};
        for (const QJsonValue &event : events) {
            const QString name = event["name"_L1].toString();
            QString payload = event["payload"_L1].toString();
            if (name == "compose-hash"_L1)
                payload = Hex::encode(composeHash());
            if (name == "instance-id"_L1)
                payload = Hex::encode(scenario.instanceID);
            log.append(QJsonObject{{u"imr"_s, 3}, {u"event"_s, name}, {u"event_payload"_s, payload}});
        }
        write(u"log"_s, QJsonDocument(log).toJson());
    }

    QByteArray composeHash() const
    {
        return QCryptographicHash::hash(scenario.configurationText.toUtf8(), QCryptographicHash::Sha256);
    }

    Scenario scenario;
    QByteArray input; // what stands on standard input

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(ProofProgramTest, AQuoteInEachEncoding)
{
    const QByteArray quote = scenario.quoteBytes();
    write(u"raw"_s, quote);
    write(u"hex"_s, "0x" + quote.toHex().toUpper() + "\n");
    write(u"base64"_s, quote.toBase64().insert(76, "\r\n") + "\n");
    for (const auto &words : {u"quote @raw"_s, u"quote @hex --hex"_s, u"quote @base64 --base64"_s}) {
        const Outcome result = runPinned(words);
        EXPECT_EQ(result.lastLine(), "verdict: ok");
        EXPECT_TRUE(result.output.contains(scenario.quote.report.mrtd.toHex()));
        EXPECT_TRUE(result.output.contains("WARNING: the intel-root pin is replaced"));
        EXPECT_TRUE(result.errors.contains("proves nothing about real hardware"));
    }
    const Outcome unpinned = run(u"quote @raw --at 2026-09-01"_s);
    EXPECT_EQ(unpinned.lastLine(), "verdict: certificateChain(\"the chain ends at an unexpected root (" +
                                       scenario.pins.intelRootSHA256.left(16).toStdString() + ")\")");
    EXPECT_TRUE(unpinned.errors.isEmpty());
}

TEST_F(ProofProgramTest, EachFaultHasItsVerdict)
{
    write(u"quote"_s, scenario.quoteBytes());
    write(u"cut"_s, scenario.quoteBytes().first(200));
    write(u"payload"_s, scenario.payload().toUtf8());
    write(u"document"_s, QJsonDocument(scenario.document()).toJson());
    write(u"list"_s, QJsonDocument(scenario.signedList()).toJson());
    write(u"array"_s, "[]");
    write(u"hex"_s, scenario.quoteBytes().toHex());
    writeBootEvents();
    scenario.gpus[1].chain[0].to = UniversalTime::at(QDate(2025, 6, 1));
    scenario.gpus[0].chain[0].name = u"LS10 A01 LF"_s;
    scenario.gpus[0].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = u"\u001b[2J"_s; };
    write(u"stale"_s, scenario.payload().toUtf8());
    QByteArray output;
    const auto outcome = [&](const QString &words) {
        const Outcome result = words.startsWith("replay"_L1) ? run(words) : runPinned(words);
        EXPECT_TRUE(result.output.contains("What was not checked"));
        output += result.output;
        return u"%1, %2"_s.arg(result.status).arg(QString::fromStdString(result.lastLine()));
    };
    EXPECT_EQ(TestData::transcript("proof/verdicts.txt", outcome), TestData::text("proof/verdicts.txt"));
    EXPECT_FALSE(output.contains('\x1b'));
    for (const char *words :
         {"The list of accepted servers is empty, so no server can pass.",
          "the list you named, signature not checked (version 3, good until 2026-12-01T00:00:00Z)",
          "devices 0 and 1 show the same first certificate", "device 0 is a switch by its first certificate",
          "A computation, no check"})
        EXPECT_TRUE(output.contains(words)) << words;
}

TEST_F(ProofProgramTest, JsonForMachines)
{
    write(u"cut"_s, scenario.quoteBytes().first(8));
    write(u"whole"_s, scenario.quoteBytes());
    const Outcome result = runPinned(u"quote @cut --json"_s);
    const auto answer = QJsonDocument::fromJson(result.output);
    EXPECT_EQ(answer["verdict"_L1].toString(), u"tooShort(\"header tail\")"_s);
    EXPECT_EQ(answer["checks"_L1][0]["result"_L1].toString(), u"failed"_s);
    EXPECT_EQ(answer["checks"_L1][1]["result"_L1].toString(), u"notReached"_s);
    EXPECT_TRUE(answer["notChecked"_L1][0].toString().startsWith("revocation"_L1));
    EXPECT_TRUE(result.errors.endsWith("verdict: tooShort(\"header tail\")\n"));
    const auto fields = QJsonDocument::fromJson(runPinned(u"quote @whole --json"_s).output)["fields"_L1];
    EXPECT_EQ(fields["FMSPC"_L1].toString(), u"b0c06f000000"_s);
    EXPECT_EQ(fields["QE ISVSVN"_L1].toString(), u"8224"_s);
    EXPECT_EQ(fields["mrseam"_L1].toString() + fields["mrsignerseam"_L1].toString(), u"12"_s.repeated(96));
    EXPECT_EQ(fields["seamattributes"_L1].toString(), u"12"_s.repeated(8));
}

// What comes of an export without a list and with one: good as it is, bad with one thing of its first row
// otherwise. A line names a member of the row or of its proof, and where in its text a character changes.
TEST_F(ProofProgramTest, OneBentFieldOfAnExportedProof)
{
    write(u"list"_s, QJsonDocument(scenario.signedList()).toJson());
    const QJsonObject good = exported();
    const auto outcome = [&](const QByteArray &line) {
        const QString name = QString::fromUtf8(line.split(' ').value(0));
        const qsizetype at = line.split(' ').value(1).toLongLong();
        QJsonObject file = good;
        QJsonArray turns = good["turns"_L1].toArray();
        QJsonObject turn = turns[0].toObject();
        QJsonObject proof = turn["proof"_L1].toObject();
        if (turn.contains(name))
            turn[name] = bent(turn[name], at);
        else if (proof.contains(name))
            turn["proof"_L1] = (proof[name] = bent(proof[name], at), proof);
        turns[0] = turn;
        file["turns"_L1] = turns;
        write(u"export"_s, QJsonDocument(file).toJson());
        const Outcome alone = run(u"export @export "_s + pinned());
        const Outcome listed = run(u"export @export --accepted @list "_s + pinned());
        EXPECT_EQ(alone.status == 0, alone.lastLine() == "verdict: ok");
        EXPECT_EQ(listed.status == 0, listed.lastLine() == "verdict: ok");
        return QString::fromStdString(alone.lastLine() + "; with a list " + listed.lastLine());
    };
    EXPECT_EQ(TestData::transcript("proof/exported.txt", outcome), TestData::text("proof/exported.txt"));
}

TEST_F(ProofProgramTest, EachRowOfAnExportHasItsVerdict)
{
    const QByteArray file = QJsonDocument(exported()).toJson();
    write(u"export"_s, file);
    const Outcome good = run(u"export @export "_s + pinned());
    for (const char *words :
         {"row 1 verdict: ok\nrow 2 verdict: ok\nrow 3 verdict: noProof\n", "ok     mrtdHex: the quote's",
          "stack, gpuEvidenceRequired, model: the list here doesn't name this image", "teeProvider",
          "WARNING: the intel-root pin is replaced"})
        EXPECT_TRUE(good.output.contains(words)) << words;
    const auto answer = QJsonDocument::fromJson(run(u"export @export --json "_s + pinned()).output);
    EXPECT_EQ(answer["rows"_L1].toArray().size(), 8);
    EXPECT_EQ(answer["rows"_L1][1]["verdict"_L1].toString(), u"ok"_s);
    EXPECT_TRUE(run(u"export @export"_s).lastLine().starts_with("verdict: rowFailed(1, certificateChain("));

    write(u"elsewhere"_s, QJsonDocument(scenario.signedList())
                              .toJson()
                              .replace(scenario.stack.mrtd.toUtf8(), QByteArray(96, '7')));
    EXPECT_EQ(run(u"export @export --accepted @elsewhere "_s + pinned()).lastLine(),
              "verdict: rowFailed(1, imageNotListed)");

    const char *const list = "Version 3, signed by Morvane, good until December 1, 2026";
    const char *const expired =
        "Version 3 expired on August 31, 2026. Until a newer list arrives, this Mac accepts "
        "only the servers built into this version of MorvaneGPT.";
    const QByteArray nonce = scenario.nonce.toHex();
    for (const auto &[from, to, verdict] :
         {std::tuple{"Verified enclave", "Your network", R"(rowFailed(1, contradiction("proof")))"},
          {"2026-09-01T12:29:59Z", "2024-09-01T12:29:59Z",
           R"(rowFailed(2, certificateChain("certificate is not yet valid")))"},
          {list, expired, "rowsChanged"},
          {list, "Built into this version of MorvaneGPT", "rowsChanged"},
          {"December 1, 2026", "August 31, 2026", R"(rowFailed(1, contradiction("acceptedServersList")))"},
          {nonce.constData(), "5A", R"(rowFailed(1, badValue("proof.clientNonceHex")))"}}) {
        write(u"other"_s, QByteArray(file).replace(from, to));
        EXPECT_EQ(run(u"export @other "_s + pinned()).lastLine(), std::string("verdict: ") + verdict) << to;
    }
    // A file that says nothing of its rows is judged by them alone.
    write(u"unstated"_s,
          QByteArray(file).replace("SHA-256", "digest").replace("\"teeProvider\"", " \"teeProvider\""));
    EXPECT_EQ(run(u"export @unstated "_s + pinned()).lastLine(), "verdict: ok");
    for (const auto &[from, to] : {std::pair{"\"exported\":", "\"exported\": 1, \"exported\":"},
                                   {"\"turns\"", "\"rows\""},
                                   {": true", ": trve"},
                                   {"\"proof\"", "\"pr\\u006fof\": 1, \"proof\""}}) {
        write(u"other"_s, QByteArray(file).replace(from, to));
        EXPECT_EQ(run(u"export @other "_s + pinned()).status, 2) << to;
    }
    write(u"empty"_s, ProofLedger().exportData(scenario.date, {}));
    EXPECT_TRUE(run(u"export @empty"_s).lastLine().ends_with("holds no proof\")"));
}

TEST_F(ProofProgramTest, WhatCannotBeCheckedIsSaid)
{
    write(u"quote"_s, scenario.quoteBytes());
    write(u"hex"_s, scenario.quoteBytes().toHex());
    write(u"payload"_s, scenario.payload().toUtf8());
    write(u"document"_s, QJsonDocument(scenario.document()).toJson());
    write(u"empty"_s, {});
    writeBootEvents();
    for (const QString words : TestData::lines("proof/not_checked.txt")) {
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 2) << words.toStdString();
        const auto answer = QJsonDocument::fromJson(run(words + u" --json"_s).output);
        const QString verdict = answer["verdict"_L1].toString();
        EXPECT_TRUE(verdict.startsWith("notChecked(\""_L1)) << words.toStdString();
        if (!words.contains("--"_L1)) {
            EXPECT_EQ(result.lastLine(), "verdict: " + verdict.toStdString());
        }
    }
    EXPECT_TRUE(run(u"quote @hex"_s).output.contains("which --hex reads"));
    input = QByteArray(200000, ' ') + scenario.payload().toUtf8(); // more than a pipe holds
    EXPECT_EQ(runPinned(u"gpu - --nonce NONCE"_s).status, 0);
    EXPECT_EQ(runPinned(u"quote @quote"_s).status, 0);
    EXPECT_EQ(runPinned(u"quote @quote"_s, u"/dev/full"_s).status, 2);
    EXPECT_TRUE(run(u"--help"_s).output.contains("morvane-proof quote FILE"));
    EXPECT_EQ(run(u"--version"_s).output, "morvane-proof " MORVANE_VERSION "\n");
}

} // namespace morvane
