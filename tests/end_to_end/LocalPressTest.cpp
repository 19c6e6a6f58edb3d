// The one press that sets up local AI, against a release host that fails in every way, and killed in the
// middle.

#include "end_to_end/KilledAtCall.h"
#include "end_to_end/LocalPressFixture.h"

#include <QDirIterator>
#include <QFile>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using LocalPressTest = LocalPressFixture;

const QByteArray ready = "ready llama3.2:1b -1";

TEST_F(LocalPressTest, FromNothingToAModelAndBackToNothingThatRuns)
{
    start();
    EXPECT_EQ(press(), ready);
    EXPECT_EQ(downloads(), 1);
    expectConfinedRuns();
    end();
    awaitAllEnded();
    EXPECT_EQ(host->journal(u"end"_s).size(), 1U) << "it had its time to put things away";
    start();
    EXPECT_EQ(press(), ready);
    EXPECT_EQ(downloads(), 1) << "it was there";
    EXPECT_EQ(host->journal(u"pull"_s).size(), 1U);
}

// Whatever the release host does: a whole runtime, or words and nothing.
TEST_F(LocalPressTest, OnlyTheArchiveThatWasMeantIsInstalled)
{
    struct Case {
        const char *delivery;
        QByteArray end; // beginning of the last line
    };
    const QByteArray other = "failed The AI runtime MorvaneGPT downloaded was not the version it expected";
    const Case table[]{
        {"missing", "failed The AI runtime couldn't be downloaded: its release page answered with HTTP 404"},
        {"busy", "failed The AI runtime couldn't be downloaded"},
        {"redirect-http", "failed"},
        {"redirect-elsewhere", "failed"},
        {"redirect-nearby", "failed"},
        {"redirect-file", "failed"},
        {"redirect-loop", "failed"},
        {"wrong-digest", other},
        {"long", other},
        {"endless", other},
        {"short", "failed The AI runtime couldn't be downloaded"},
        {"wrong-range", "failed"},
        {"cut-then-changed", other},
        {"no-ranges", ready},
        {"cut-once", ready},
        {"cut-often", ready}};
    start();
    for (const Case &each : table) {
        SCOPED_TRACE(each.delivery);
        host->deliver(QLatin1StringView(each.delivery));
        const QByteArray last = press();
        EXPECT_TRUE(last.startsWith(each.end)) << last.toStdString();
        const bool isThere = each.end == ready;
        EXPECT_EQ(QFile::exists(managed(u"bin/ollama"_s)), isThere);
        if (isThere) {
            tell("stop");
            EXPECT_FALSE(comes("unknown").isEmpty());
        }
        QDir(managed(u"bin"_s)).removeRecursively(); // the next case begins with nothing
        QDir(managed(u"downloads"_s)).removeRecursively();
    }
    expectConfinedRuns();
}

TEST_F(LocalPressTest, NothingLeavesTheFolderItIsUnpackedInto)
{
    for (const char *archive :
         {"dot-paths", "set-user-id", "no-binary", "binary-link", "half", "not-an-archive", "climb",
          "absolute", "symbolic-link-out", "symbolic-link-up", "hard-link-out", "device", "pipe", "hole",
          "many-entries"}) {
        SCOPED_TRACE(archive);
        useHost(QLatin1StringView(archive));
        start();
        const QByteArray last = press();
        const bool isGood =
            QByteArrayView(archive) == "dot-paths" || QByteArrayView(archive) == "set-user-id";
        EXPECT_TRUE(
            last.startsWith(isGood ? ready : "failed The downloaded AI runtime couldn't be unpacked."))
            << last.toStdString();
        EXPECT_TRUE(host->isUnharmed());
        EXPECT_EQ(host->journal(u"serve"_s).size(), isGood ? 1U : 0U);
        EXPECT_EQ(QFile::exists(managed(u"bin/ollama"_s)), isGood);
        EXPECT_FALSE(QFile::exists(profile.filePath(u"profile/escaped"_s)));
        EXPECT_FALSE(QFile::exists(managed(u"escaped"_s)));
        if (isGood)
            expectConfinedRuns();
        end();
        for (QDirIterator files(profile.path(), QDir::Files, QDirIterator::Subdirectories);
             files.hasNext();) {
            files.next();
            EXPECT_FALSE(files.fileInfo().permission(QFileDevice::WriteOther))
                << files.filePath().toStdString();
            EXPECT_EQ(files.fileInfo().size() > 100'000'000, false) << files.filePath().toStdString();
        }
        QDir(profile.filePath(u"profile"_s)).removeRecursively();
    }
}

// Where a press is when something goes away.
struct Stage {
    QByteArray name;
    const char *delivery = "good";
    const char *scenario = "good";
    const char *event = ""; // of the journal, by which it is known to be there

    friend void PrintTo(const Stage &stage, std::ostream *out) { *out << stage.name.constData(); }
};

class BrokenPressTest : public LocalPressFixture, public testing::WithParamInterface<Stage> {
protected:
    BrokenPressTest()
    {
        host->deliver(QLatin1StringView(GetParam().delivery));
        host->play(QLatin1StringView(GetParam().scenario));
        start();
        tell("press");
        awaitJournal(QLatin1StringView(GetParam().event));
    }
    [[nodiscard]] bool hasRuntime() const { return GetParam().name != "download"; }
    void expectGoesOn()
    {
        host->deliver(u"good"_s);
        host->play(u"good"_s);
        EXPECT_EQ(press(), ready);
        expectConfinedRuns();
        EXPECT_EQ(downloads(), hasRuntime() ? 1 : 2);
        if (GetParam().name == "pull") {
            EXPECT_GT(host->journal(u"layer"_s).at(1)["from"_L1].toInt(), 4'000'000);
        }
    }
};

TEST_P(BrokenPressTest, TheNextPressGoesOnAfterTheProgramWasKilled)
{
    if (!hasRuntime())
        (void)awaitPart();
    kill();
    awaitAllEnded();
    const qint64 part = hasRuntime() ? 0 : awaitPart();
    start();
    expectGoesOn();
    if (!hasRuntime()) {
        EXPECT_EQ(host->requests().back().headers["Range"_L1].toString(), u"bytes=%1-"_s.arg(part));
    }
}

TEST_P(BrokenPressTest, TheNextPressGoesOnAfterItWasCancelled)
{
    tell("cancel");
    EXPECT_FALSE(comes("notSetUp").isEmpty());
    expectGoesOn();
}

TEST_P(BrokenPressTest, ARuntimeThatIsKilledIsStartedAgain)
{
    if (!hasRuntime())
        return;
    host->play(u"good"_s);
    ::kill(host->journal(u"serve"_s).at(0)["process"_L1].toInt(), SIGKILL);
    EXPECT_FALSE(comes("failed").isEmpty());
    awaitAllEnded();
    expectGoesOn();
}

INSTANTIATE_TEST_SUITE_P(Stages, BrokenPressTest,
                         testing::Values(Stage{"download", "held", "good", "held"},
                                         Stage{"start", "good", "never-listens", "serve"},
                                         Stage{"pull", "good", "pull-held", "held"}));

// Killed at a call, each time a few further on.
struct Calls {
    const char *verbs;
    int first;
    int step;

    friend void PrintTo(const Calls &calls, std::ostream *out) { *out << calls.verbs << ' ' << calls.first; }
};

// The part file, what is unpacked, its record, what is put in its place, the pins: everything below the
// folder.
class PressKilledAtCallTest : public LocalPressFixture, public testing::WithParamInterface<Calls> {
protected:
    // False when it was ready before the call.
    bool isKilledAt(int call)
    {
        QDir().mkpath(managed({}));
        start(killedAtCall(call, managed({}), GetParam().verbs));
        return press() != ready;
    }
};

TEST_P(PressKilledAtCallTest, NothingHalfInstalledEverRuns)
{
    int call = GetParam().first;
    for (; isKilledAt(call) && !HasFailure(); call += GetParam().step) {
        SCOPED_TRACE(call);
        program.waitForFinished();
        awaitAllEnded();
        start();
        EXPECT_EQ(press(), ready);
        expectConfinedRuns();
        end();
        QDir(profile.filePath(u"profile"_s)).removeRecursively();
    }
    // How many writes there are depends on how the download's pieces come.
    EXPECT_GT(call, GetParam().first) << "the calls were not seen";
}

INSTANTIATE_TEST_SUITE_P(EveryChangeOfNames, PressKilledAtCallTest,
                         testing::Values(Calls{"rename unlink sync", 1, 2},
                                         Calls{"rename unlink sync", 2, 2}));
INSTANTIATE_TEST_SUITE_P(SomeWrites, PressKilledAtCallTest,
                         testing::Values(Calls{"write", 2, 40}, Calls{"write", 22, 40}));

// A disk of its own that is full at each stage in turn, and has room again for the next press.
TEST_F(LocalPressTest, AFullDiskIsSaidAndTheNextPressGoesOn)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP()
        << "the practice runtime is several times as large with the sanitizers, and fills the disk elsewhere";
#endif
    struct Case {
        int free; // bytes, when the press begins
        QByteArray words;
    };
    constexpr int size = 40'000'000;
    for (const Case &each :
         {Case{1'000'000, "failed The disk is full, so the download stopped."},
          Case{5'000'000, "failed The disk is full, so the AI runtime couldn't be unpacked."},
          Case{10'000'000, "failed Couldn't download the model llama3.2:1b"}}) {
        SCOPED_TRACE(each.free);
        if (!startOnDisk(size))
            GTEST_SKIP() << "this system lets nobody have a disk of their own";
        tell("fill " + QByteArray::number(size - each.free));
        const QByteArray last = press();
        EXPECT_TRUE(last.startsWith(each.words)) << last.toStdString();
        tell("free");
        EXPECT_EQ(press(), ready);
        expectConfinedRuns();
        end();
        awaitAllEnded();
    }
}

} // namespace

} // namespace morvane
