#include "support/evidence/TestAuthority.h"

#include "utils/bytes/Hex.h"

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

// The program itself, over minted files in a folder of its own.
class ProofProgramTest : public testing::Test {
protected:
    QString file(const QString &name, const QByteArray &contents)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return file.fileName();
    }

    static Outcome run(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral(MORVANE_PROOF), arguments);
        EXPECT_TRUE(process.waitForFinished(60000));
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    // With the test authority's pins, at a date when its certificates are valid.
    Outcome runPinned(const QStringList &arguments) const
    {
        const QStringList pins{
            u"--pin"_s, u"intel-root="_s + scenario.pins.intelRootSHA256,
            u"--pin"_s, u"quoting-enclave="_s + scenario.pins.quotingEnclaveSigner.toUpper(),
            u"--pin"_s, u"nvidia-root="_s + scenario.pins.nvidiaRootSHA256};
        return run(QStringList{u"--at"_s, u"2026-09-01T12:00:00Z"_s} + pins +
                   arguments); // a later --at counts
    }

    Scenario scenario;

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(ProofProgramTest, AQuoteInEachEncoding)
{
    const QByteArray quote = scenario.quoteBytes();
    const struct {
        QByteArray contents;
        QStringList option;
    } rows[] = {{quote, {}},
                {"0x" + quote.toHex().toUpper() + "\n", {u"--hex"_s}},
                {quote.toBase64().insert(76, "\r\n") + "\n", {u"--base64"_s}}};
    for (const auto &row : rows) {
        const Outcome result =
            runPinned(QStringList{u"quote"_s, file(u"quote"_s, row.contents)} + row.option);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.lastLine(), "verdict: ok");
        EXPECT_TRUE(result.output.contains(scenario.quote.report.mrtd.toHex()));
        EXPECT_TRUE(result.output.contains("WARNING: the intel-root pin is replaced"));
        EXPECT_TRUE(result.errors.contains("proves nothing about real hardware"));
    }
}

TEST_F(ProofProgramTest, ABrokenQuoteNamesItsFault)
{
    const QByteArray quote = scenario.quoteBytes();
    const QString good = file(u"good"_s, quote);
    const struct {
        Outcome result;
        const char *verdict;
    } rows[] = {
        {runPinned({u"quote"_s, file(u"cut"_s, quote.first(200))}), "verdict: tooShort(\"mrtd\")"},
        {runPinned({u"quote"_s, file(u"empty"_s, {})}), "verdict: tooShort(\"version\")"},
        {runPinned({u"quote"_s, good, u"--hex"_s}), "verdict: noQuote"},
        {runPinned({u"quote"_s, good, u"--at"_s, u"2036-01-01"_s}),
         "verdict: certificateChain(\"certificate has expired\")"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(row.result.status, 1) << row.verdict;
        EXPECT_EQ(row.result.lastLine(), row.verdict);
    }
    const Outcome unpinned = run({u"quote"_s, good, u"--at"_s, u"2026-09-01"_s});
    EXPECT_EQ(unpinned.lastLine(), "verdict: certificateChain(\"the chain ends at an unexpected root (" +
                                       scenario.pins.intelRootSHA256.left(16).toStdString() + ")\")");
    EXPECT_TRUE(unpinned.errors.isEmpty());
}

TEST_F(ProofProgramTest, GraphicsChips)
{
    const QString good = file(u"good"_s, scenario.payload().toUtf8());
    const QString nonce = Hex::encode(scenario.nonce);
    EXPECT_EQ(runPinned({u"gpu"_s, good, u"--nonce"_s, nonce}).lastLine(), "verdict: ok");
    EXPECT_EQ(runPinned({u"gpu"_s, good, u"--nonce"_s, u"00"_s}).lastLine(), "verdict: nonceMismatch(-1)");
    EXPECT_EQ(runPinned({u"gpu"_s, file(u"list"_s, "[]"), u"--nonce"_s, nonce}).lastLine(),
              "verdict: malformedPayload");
    scenario.gpus[1].chain[0].to = QDateTime(QDate(2025, 6, 1), QTime(0, 0), Qt::UTC);
    scenario.gpus[0].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = u"\u001b[2J"_s; };
    const Outcome stale =
        runPinned({u"gpu"_s, file(u"stale"_s, scenario.payload().toUtf8()), u"--nonce"_s, nonce});
    EXPECT_EQ(stale.lastLine(), "verdict: certificateChain(1, \"certificate has expired\")");
    EXPECT_FALSE(stale.output.contains('\x1b'));
}

TEST_F(ProofProgramTest, ReplayPrintsTheRegister)
{
    const QJsonArray events = scenario.signedList()["entries"_L1][0]["bootEvents"_L1].toArray();
    const QString path = file(u"events"_s, QJsonDocument(events).toJson());
    const QString hash = Hex::encode(
        QCryptographicHash::hash(scenario.configurationText.toUtf8(), QCryptographicHash::Sha256));
    const QString instance = Hex::encode(scenario.instanceID);
    const Outcome good = run({u"replay"_s, path, u"--compose-hash"_s, hash, u"--instance-id"_s, instance});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.lastLine(), "verdict: ok");
    EXPECT_TRUE(good.output.contains(TDXQuote::parse(scenario.quoteBytes()).report.rtmr3.toHex()));
    const Outcome shortHash =
        run({u"replay"_s, path, u"--compose-hash"_s, u"00"_s, u"--instance-id"_s, instance});
    EXPECT_EQ(shortHash.lastLine(), "verdict: bootMeasurementMismatch");
    EXPECT_EQ(shortHash.status, 1);
}

TEST_F(ProofProgramTest, ADocumentAgainstAList)
{
    const QString document = file(u"document"_s, QJsonDocument(scenario.document()).toJson());
    const QString list = file(u"list"_s, QJsonDocument(scenario.signedList()).toJson());
    const QStringList ask{u"document"_s,        document,     u"--model"_s,
                          u"e2ee-test-model"_s, u"--nonce"_s, Hex::encode(scenario.nonce)};
    const Outcome good = runPinned(ask + QStringList{u"--accepted"_s, list});
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.lastLine(), "verdict: ok");
    EXPECT_TRUE(good.output.contains("Version 3, signed by Morvane, good until December 1, 2026"));

    const Outcome builtIn = runPinned(ask);
    EXPECT_EQ(builtIn.lastLine(), "verdict: measurementsNotAllowed(\"e2ee-test-model\")");
    EXPECT_TRUE(builtIn.output.contains("The list of accepted servers is empty, so no server can pass."));
    EXPECT_EQ(runPinned(ask + QStringList{u"--accepted"_s, document}).lastLine(), "verdict: unknownFormat");
    EXPECT_EQ(runPinned(ask + QStringList{u"--accepted"_s, list, u"--at"_s, u"2026-12-01"_s}).lastLine(),
              "verdict: measurementsNotAllowed(\"e2ee-test-model\")");
    EXPECT_EQ(runPinned({u"document"_s, list, u"--model"_s, u"m"_s, u"--nonce"_s, u""_s}).lastLine(),
              "verdict: wrongModel(\"m\", \"\")");
    EXPECT_EQ(
        runPinned({u"document"_s, file(u"x"_s, "x"), u"--model"_s, u"m"_s, u"--nonce"_s, u""_s}).lastLine(),
        "verdict: notJSON");
}

TEST_F(ProofProgramTest, JsonForMachines)
{
    const Outcome result =
        runPinned({u"quote"_s, file(u"cut"_s, scenario.quoteBytes().first(8)), u"--json"_s});
    const auto object = QJsonDocument::fromJson(result.output).object();
    EXPECT_EQ(object["verdict"_L1].toString(), u"tooShort(\"header tail\")"_s);
    EXPECT_EQ(object["checks"_L1][0]["result"_L1].toString(), u"failed"_s);
    EXPECT_EQ(object["checks"_L1][1]["result"_L1].toString(), u"notReached"_s);
    EXPECT_TRUE(result.errors.endsWith("verdict: tooShort(\"header tail\")\n"));
    EXPECT_EQ(result.status, 1);
}

TEST_F(ProofProgramTest, WhatCannotBeCheckedIsSaid)
{
    const QString quote = file(u"quote"_s, scenario.quoteBytes());
    const QStringList rows[] = {
        {},
        {u"quotes"_s, quote},
        {u"quote"_s},
        {u"quote"_s, quote, quote},
        {u"quote"_s, quote + u".missing"_s},
        {u"quote"_s, quote, u"--nonce"_s, u"00"_s},
        {u"quote"_s, quote, u"--hex"_s, u"--base64"_s},
        {u"quote"_s, quote, u"--at"_s, u"yesterday"_s},
        {u"quote"_s, quote, u"--pin"_s, u"intel-root=00"_s},
        {u"quote"_s, quote, u"--pin"_s, u"root="_s + QString(64, u'a')},
        {u"quote"_s, quote, u"--color"_s},
        {u"gpu"_s, quote},
        {u"gpu"_s, quote, u"--nonce"_s, u"xyz"_s},
    };
    for (const QStringList &arguments : rows) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments.join(u' ').toStdString();
        EXPECT_TRUE(result.lastLine().starts_with("verdict: notChecked(\"")) << result.lastLine();
    }
    const Outcome help = run({u"--help"_s});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.contains("morvane-proof quote FILE"));
}

} // namespace morvane
