#include "evidence/TestAuthority.h"
#include "support/TestData.h"
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
    void write(const QString &name, const QByteArray &contents)
    {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

    // The words of a command line, in which "@name" stands for the path of a file and NONCE for the good one.
    Outcome run(QString words) const
    {
        words.replace(u'@', m_folder.path() + u'/').replace("NONCE"_L1, Hex::encode(scenario.nonce));
        QProcess process;
        process.start(QStringLiteral(MORVANE_PROOF), words.split(u' ', Qt::SkipEmptyParts));
        EXPECT_TRUE(process.waitForFinished(60000));
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    // With the test authority's pins, at a date when its certificates are valid; a later --at counts.
    Outcome runPinned(const QString &words) const
    {
        const EvidencePins &pins = scenario.pins;
        const QString options =
            u"--at 2026-09-01T12:00Z --pin intel-root=%1 --pin quoting-enclave=%2 --pin nvidia-root=%3 "_s;
        return run(
            options.arg(pins.intelRootSHA256, pins.quotingEnclaveSigner.toUpper(), pins.nvidiaRootSHA256) +
            words);
    }

    Scenario scenario;

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
    scenario.gpus[1].chain[0].to = QDateTime(QDate(2025, 6, 1), QTime(0, 0), Qt::UTC);
    scenario.gpus[0].onEntry = [](QJsonObject &entry) { entry["arch"_L1] = u"\u001b[2J"_s; };
    write(u"stale"_s, scenario.payload().toUtf8());
    QByteArray output;
    const auto outcome = [&](const QString &words) {
        const Outcome result = runPinned(words);
        output += result.output;
        return u"%1, %2"_s.arg(result.status).arg(QString::fromStdString(result.lastLine()));
    };
    EXPECT_EQ(TestData::transcript("proof/verdicts.txt", outcome), TestData::text("proof/verdicts.txt"));
    EXPECT_FALSE(output.contains('\x1b'));
    EXPECT_TRUE(output.contains("The list of accepted servers is empty, so no server can pass."));
    EXPECT_TRUE(output.contains("Version 3, signed by Morvane, good until December 1, 2026"));
}

TEST_F(ProofProgramTest, ReplayPrintsTheRegister)
{
    const QJsonArray events = scenario.signedList()["entries"_L1][0]["bootEvents"_L1].toArray();
    write(u"events"_s, QJsonDocument(events).toJson());
    const QByteArray text = scenario.configurationText.toUtf8();
    const QString hash = Hex::encode(QCryptographicHash::hash(text, QCryptographicHash::Sha256));
    const QString replay = u"replay @events --instance-id "_s + Hex::encode(scenario.instanceID);
    const Outcome good = run(replay + u" --compose-hash "_s + hash);
    EXPECT_EQ(good.lastLine(), "verdict: ok");
    EXPECT_TRUE(good.output.contains(TDXQuote::parse(scenario.quoteBytes()).report.rtmr3.toHex()));
    EXPECT_EQ(run(replay + u" --compose-hash 00"_s).lastLine(), "verdict: bootMeasurementMismatch");
}

TEST_F(ProofProgramTest, JsonForMachines)
{
    write(u"cut"_s, scenario.quoteBytes().first(8));
    const Outcome result = runPinned(u"quote @cut --json"_s);
    const auto answer = QJsonDocument::fromJson(result.output);
    EXPECT_EQ(answer["verdict"_L1].toString(), u"tooShort(\"header tail\")"_s);
    EXPECT_EQ(answer["checks"_L1][0]["result"_L1].toString(), u"failed"_s);
    EXPECT_EQ(answer["checks"_L1][1]["result"_L1].toString(), u"notReached"_s);
    EXPECT_TRUE(result.errors.endsWith("verdict: tooShort(\"header tail\")\n"));
}

TEST_F(ProofProgramTest, WhatCannotBeCheckedIsSaid)
{
    write(u"quote"_s, scenario.quoteBytes());
    for (const QString words : TestData::lines("proof/not_checked.txt")) {
        const Outcome result = run(words);
        EXPECT_EQ(result.status, 2) << words.toStdString();
        EXPECT_TRUE(result.lastLine().starts_with("verdict: notChecked(\"")) << result.lastLine();
    }
    EXPECT_TRUE(run(u"--help"_s).output.contains("morvane-proof quote FILE"));
}

} // namespace morvane
