#include "TestFiles.h"
#include "ai/local/LocalRuntimeValues.h"
#include "ai/local/ModelDigestPins.h"
#include "ai/local/ModelLadder.h"
#include "ai/local/SetupLog.h"
#include "ai/local/TransferFigures.h"
#include "platform/linux/LinuxMachine.h"
#include "support/ManualClock.h"
#include "utils/text/Json.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using ModelLadder::gibibyte;

namespace {

std::uint64_t gib(double count)
{
    return static_cast<std::uint64_t>(count * static_cast<double>(gibibyte));
}

} // namespace

TEST(ModelLadderTest, TheModelFollowsTheMemoryThatItCanUse)
{
    struct Row {
        double main, nvidia, amd;
        bool usesAMD;
        const char *model;
    };
    for (const Row &row : std::vector<Row>{{64, 0, 0, false, "llama3.2:3b"},
                                           {7, 0, 0, false, "llama3.2:3b"},
                                           {6.99, 0, 0, false, "llama3.2:1b"},
                                           {4, 30, 0, false, "qwen2.5:14b"},
                                           {64, 29.9, 0, false, "qwen2.5:7b"},
                                           {4, 14, 0, false, "qwen2.5:7b"},
                                           {4, 13.9, 0, false, "llama3.2:3b"},
                                           {4, 6.9, 0, false, "llama3.2:1b"},
                                           {64, 2, 0, false, "llama3.2:3b"},
                                           {64, 0, 16, false, "llama3.2:3b"},
                                           {64, 0, 16, true, "qwen2.5:7b"}}) {
        const LocalMachine::Memory memory{gib(row.main), gib(row.nvidia), gib(row.amd)};
        EXPECT_EQ(ModelLadder::recommended(memory, row.usesAMD).toStdString(), row.model)
            << row.main << row.nvidia;
        EXPECT_EQ(ModelLadder::offersVision(memory, row.usesAMD),
                  row.nvidia >= 14 || (row.usesAMD && row.amd >= 14));
    }
}

TEST(ModelLadderTest, TheFirstModelThatFitsTheDiskIsTaken)
{
    const QStringList ladder{u"qwen2.5:14b"_s, u"qwen2.5:7b"_s, u"llama3.2:3b"_s, u"llama3.2:1b"_s};
    for (qsizetype i = 0; i < ladder.size(); ++i) {
        const std::uint64_t need = ModelLadder::need(ladder[i]);
        EXPECT_EQ(ModelLadder::fitting(ladder[0], need), ladder[i]);
        EXPECT_EQ(ModelLadder::fitting(ladder[0], need - 1).value_or(QString()), ladder.value(i + 1));
        EXPECT_EQ(ModelLadder::fitting(ladder[i], std::nullopt), ladder[i]);
        EXPECT_EQ(ModelLadder::fitting(ladder[i], gib(100)), ladder[i]);
    }
}

TEST(TransferMeterTest, TheSpeedIsThatOfTheLastSecondsAndAResumedPartIsNone)
{
    TransferMeter meter;
    EXPECT_EQ(meter.note(1'000'000, 2'000'000, 0ms).bytesPerSecond, std::nullopt);
    EXPECT_EQ(meter.note(1'001'000, 2'000'000, 500ms).timeLeft, std::nullopt);
    const auto figures = meter.note(1'004'000, 2'000'000, 2'000ms);
    EXPECT_DOUBLE_EQ(*figures.bytesPerSecond, 2'000);
    EXPECT_EQ(figures.timeLeft, 498s);
    TransferFigures later;
    for (int i = 1; i <= 100; ++i)
        later = meter.note(1'004'000 + i * 1'000, 2'000'000, 2'000ms + i * 100ms);
    EXPECT_NEAR(*later.bytesPerSecond, 10'000, 200);
    EXPECT_EQ(meter.note(5, std::nullopt, 20'000ms).bytesPerSecond, std::nullopt) << "another layer";
    EXPECT_EQ(meter.note(5, 10, 30'000ms).timeLeft, std::nullopt) << "it stands still";
}

TEST(ModelDigestPinsTest, AChangeIsToldUntilItIsAccepted)
{
    const QTemporaryDir home;
    const QString path = home.filePath(u"model-pins.json"_s);
    const auto listed = [](const char *json) { return ServerModel::listed(*Json::parseObject(json)); };
    const auto first =
        listed(R"({"models":[{"name":"a","model":"A","digest":"1","size":5},{"name":"b","digest":"2"},
        {"digest":"3"},{"name":"c"},7,{"name":"d","digest":4}]})");
    ASSERT_EQ(first.size(), 4U);
    EXPECT_EQ(first.front(), (ServerModel{u"A"_s, u"1"_s, 5}));
    EXPECT_TRUE(ModelDigestPins(path).compare(first).empty());
    EXPECT_EQ(TestFiles::read(path).simplified().replace(" ", ""), R"({"digests":{"A":"1","b":"2"}})");

    const auto swapped = listed(R"({"models":[{"model":"A","digest":"9"},{"name":"b","digest":"2"}]})");
    const ModelDigestPins::Change change{u"A"_s, u"1"_s, u"9"_s};
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(ModelDigestPins(path).compare(swapped), std::vector{change})
            << "it stands until it is accepted";
    ModelDigestPins(path).accept(change);
    EXPECT_TRUE(ModelDigestPins(path).compare(swapped).empty());
    ModelDigestPins(path).forget(u"A"_s);
    EXPECT_TRUE(ModelDigestPins(path).compare(first).empty());
    TestFiles::write(path, "no JSON");
    EXPECT_TRUE(ModelDigestPins(path).digests().isEmpty());
}

TEST(SetupLogTest, TheFileIsBoundedAndALineIsALine)
{
    const QTemporaryDir home;
    const ManualClock clock;
    SetupLog log(home.filePath(u"in/a/folder/log"_s), clock);
    log.write(u"one\x1b[2J\ntwo"_s);
    log.takeOutput("half");
    log.takeOutput(" a line\n\nnext ");
    log.takeOutput(QByteArray(100'000, 'x') + '\n');
    const QByteArrayList lines = TestFiles::read(home.filePath(u"in/a/folder/log"_s)).split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], "2026-03-01T12:00:00Z one [2J two");
    EXPECT_EQ(lines[1], "2026-03-01T12:00:00Z runtime: half a line");
    EXPECT_EQ(lines[2].size(), 21 + SetupLog::longestLine);
    for (int i = 0; i < 2'000; ++i)
        log.write(QString(400, u'y'));
    for (const QString &name : {u"log"_s, u"log.1"_s}) {
        const QFileInfo file(home.filePath(u"in/a/folder/"_s + name));
        EXPECT_GT(file.size(), 0);
        EXPECT_LE(file.size(), SetupLog::largestFile);
        EXPECT_EQ(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
    }
}

TEST(LocalRuntimeValuesTest, ATrialStaysOnThisMachine)
{
    const auto values = LocalRuntimeValues::ofThisBuild(SupportFolders::inProfile(u"/profile"_s));
    EXPECT_EQ(values.binary(), u"/profile/data/Morvane/bin/ollama"_s);
    const QByteArray good = R"({"releaseOrigin":"http://127.0.0.1:1","serverOrigin":"http://localhost:2",
        "archive":"a.tar.zst","sha256":")" +
                            QByteArray(64, 'a') + R"(","bytes":3,"foundRuntimes":["/x"]})";
    const auto trial = values.withDevelopmentFile(good);
    ASSERT_TRUE(trial);
    EXPECT_EQ(trial->archiveURL().toString(),
              u"http://127.0.0.1:1/ollama/ollama/releases/download/v0.34.0/a.tar.zst"_s);
    EXPECT_EQ(trial->port(), 2);
    for (const auto &[from, to] :
         std::vector<std::pair<QByteArray, QByteArray>>{{"127.0.0.1:1", "example.com:1"},
                                                        {"localhost:2", "localhost"},
                                                        {"http://localhost", "https://localhost"},
                                                        {"http://127.0.0.1:1", "http://127.0.0.1:1/path"},
                                                        {"http://127.0.0.1:1", "http://a@127.0.0.1:1"},
                                                        {"bytes", "other"},
                                                        {"\"/x\"", "\"x\""},
                                                        {"}", ""}})
        EXPECT_FALSE(values.withDevelopmentFile(QByteArray(good).replace(from, to))) << from.toStdString();
    EXPECT_FALSE(values.withDevelopmentFile(QByteArray(good).replace("aaaa", "AAAA"))->archive);
}

TEST(LinuxMachineTest, MemoryIsReadFromTheKernelAndTheDrivers)
{
    const QTemporaryDir root;
    const auto put = [&](const QString &name, const QByteArray &text) {
        QDir().mkpath(QFileInfo(root.filePath(name)).path());
        TestFiles::write(root.filePath(name), text);
    };
    const LinuxMachine machine({root.path(), root.path(), "/nonexistent.so"});
    EXPECT_EQ(machine.memory(), LocalMachine::Memory());
    put(u"meminfo"_s, "MemFree:  1 kB\nMemTotal:       16303428 kB\n");
    put(u"class/drm/card0/device/mem_info_vram_total"_s, "536870912\n");
    put(u"class/drm/card1/device/mem_info_vram_total"_s, "17163091968\n");
    put(u"class/drm/card2/device/mem_info_vram_total"_s, "-1\n");
    const LocalMachine::Memory memory{16303428ULL * 1024, 0, 17163091968};
    EXPECT_EQ(machine.memory(), memory);
    EXPECT_GT(LinuxMachine().memory().main, gibibyte / 4);
    EXPECT_GT(*machine.freeDisk(root.filePath(u"not/there/yet"_s)), 0U);
}

} // namespace morvane
