#include "ai/local/LocalModelService.h"

#include "TestArchive.h"
#include "ai/local/ModelLadder.h"
#include "ai/local/RuntimeDownload.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "persistence/InMemorySettingsRepository.h"
#include "persistence/SettingsStore.h"
#include "platform/linux/LinuxMachine.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QFileInfo>
#include <QTcpServer>
#include <QTemporaryDir>

#include <csignal>
#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Kind = LocalModelService::Phase::Kind;

namespace {

// This machine, with as much memory and disk as a test likes.
class TestMachine final : public LocalMachine {
public:
    [[nodiscard]] Memory memory() const override { return {ModelLadder::gibibyte, 0, 0}; }
    [[nodiscard]] std::optional<std::uint64_t> freeDisk(const QString &) const override { return disk; }
    [[nodiscard]] std::optional<std::vector<Listener>> listeners(qint64 process) const override
    {
        return real.listeners(process);
    }
    [[nodiscard]] bool isShared(int port, qint64 process) const override
    {
        return real.isShared(port, process);
    }

    std::optional<std::uint64_t> disk;
    LinuxMachine real;
};

int freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

// The whole press against a release host and a runtime of a few lines, both real and on loopback.
class LocalModelServiceTest : public testing::Test {
protected:
    LocalModelServiceTest()
    {
        qputenv("HOME", home.path().toUtf8());
        const QByteArray script = TestArchive::read(QStringLiteral(MORVANE_SCRIPTED_RUNTIME));
        archive = TestArchive::of({{TestArchive::Kind::program, "bin/ollama", script},
                                   {TestArchive::Kind::file, "lib/ollama/a.so", "library"}});
        releases = std::make_unique<ScriptedServer>(
            ScriptedServer::answering(ScriptedServer::response("200 OK", archive)));
        values.version = u"1"_s;
        values.folder = home.filePath(u"data"_s);
        values.guard = QStringLiteral(MORVANE_RUNTIME_GUARD);
        values.serverOrigin = QUrl(u"http://127.0.0.1:%1"_s.arg(freePort()));
        values.releaseOrigin = releases->url(QString());
        values.archive =
            LocalRuntimeValues::Archive{u"a.tar.zst"_s, TestArchive::digestOf(archive), archive.size()};
        values.foundRuntimes = {home.filePath(u"found"_s)};
        start();
    }
    ~LocalModelServiceTest() override
    {
        service.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
        EXPECT_EQ(alive(), 0) << "a process was left";
        qputenv("HOME", formerHome);
    }

    void start()
    {
        service = std::make_unique<LocalModelService>(
            LocalModelService::Services{settings, network, vault, machine, clock, work}, values);
        QObject::connect(service.get(), &LocalModelService::changed, service.get(), [this] {
            if (phases.empty() || phases.back() != service->phase().kind)
                phases.push_back(service->phase().kind);
        });
    }

    void play(const QString &name) { TestArchive::write(home.filePath(name), {}); }

    void press()
    {
        service->setUp();
        settle();
    }
    void settle()
    {
        TestWait::until([this] { return !service->isBusy(); });
    }

    // Ids of what the runtime started so far, itself first.
    QList<pid_t> pids() const
    {
        QList<pid_t> ids;
        for (const QByteArray &id : TestArchive::read(home.filePath(u"pids"_s)).simplified().split(' '))
            if (!id.isEmpty())
                ids += id.toInt();
        return ids;
    }
    qsizetype alive() const
    {
        const auto ids = pids();
        return std::count_if(ids.begin(), ids.end(), [](pid_t id) { return ::kill(id, 0) == 0; });
    }
    QByteArray log() const { return TestArchive::read(values.setupLog()); }

    const QByteArray formerHome = qgetenv("HOME");
    QTemporaryDir home;
    LogCapture lines;
    SystemClock clock;
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    TestMachine machine;
    QByteArray archive;
    std::unique_ptr<ScriptedServer> releases;
    LocalRuntimeValues values;
    Work work{clock};
    std::unique_ptr<LocalModelService> service;
    std::vector<Kind> phases;
};

TEST_F(LocalModelServiceTest, OnePressGoesFromNothingToAModelAndTheNextStartNeedsNone)
{
    const SetupPlan plan = TestWait::await(service->plan({}));
    EXPECT_EQ(plan.runtime, SetupPlan::Runtime::toDownload);
    EXPECT_EQ(plan.runtimeBytes, archive.size());
    EXPECT_EQ(plan.toFetch(), archive.size() + ModelLadder::size(u"llama3.2:1b"_s));
    press();
    EXPECT_EQ(phases, (std::vector{Kind::downloadingRuntime, Kind::startingRuntime, Kind::downloadingModel,
                                   Kind::ready}))
        << service->phase().text.toStdString();
    EXPECT_EQ(service->model(), u"llama3.2:1b"_s);
    EXPECT_EQ(settings.model(), u"llama3.2:1b"_s);
    EXPECT_EQ(settings.baseURLString(), service->baseURL());
    EXPECT_EQ(settings.providerName(), LocalModelService::providerName());
    EXPECT_FALSE(settings.hostedChatEnabled()) << "what was promised to stay here";
    EXPECT_TRUE(lines.lines().contains(u"ai-provider: Local AI ready with model llama3.2:1b"_s));
    EXPECT_TRUE(log().contains("setup start; recommended llama3.2:1b"));
    EXPECT_TRUE(log().contains("runtime: words of the runtime"));
    EXPECT_FALSE(log().contains("words of the person"));
    EXPECT_EQ(TestArchive::read(home.filePath(u"seen"_s)).trimmed(),
              "['HOME', 'LC_ALL', 'OLLAMA_HOST', 'PATH'] True [] ['serve']");
    EXPECT_FALSE(QFileInfo::exists(RuntimeDownload::path(values)));
    EXPECT_EQ(alive(), 2);

    start(); // the program ends and starts again
    EXPECT_EQ(alive(), 0);
    phases.clear();
    service->prepare();
    settle();
    EXPECT_EQ(phases, (std::vector{Kind::startingRuntime, Kind::ready}));
    EXPECT_EQ(releases->requests().size(), 1U);

    play(u"unknown"_s); // to the registry
    QString sentence;
    QObject::connect(service.get(), &LocalModelService::failed, service.get(),
                     [&](const QString &words) { sentence = words; });
    service->pull(u" other "_s);
    EXPECT_EQ(service->model(), u"llama3.2:1b"_s) << "it goes on answering";
    settle();
    EXPECT_EQ(sentence, u"Couldn't download the model other: it is unknown"_s);
    EXPECT_EQ(service->phase().kind, Kind::ready);

    service->remove(u"llama3.2:1b"_s);
    settle();
    EXPECT_TRUE(service->models().empty());
    EXPECT_EQ(settings.model(), QString());
    EXPECT_EQ(service->phase().kind, Kind::notSetUp);
    service->stop();
    settle();
    EXPECT_EQ(alive(), 0);
}

TEST_F(LocalModelServiceTest, ASwappedRuntimeNeverRuns)
{
    press();
    start();
    QFile::remove(home.filePath(u"pids"_s));
    TestArchive::write(values.binary(), TestArchive::read(values.binary()) + "# swapped\n");
    service->prepare();
    settle();
    EXPECT_EQ(service->phase().text,
              u"The local AI runtime on this computer was not the one MorvaneGPT installed, so it "
              "was removed. Set up local AI again to reinstall it."_s);
    EXPECT_TRUE(pids().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(values.binary()));
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
}

TEST_F(LocalModelServiceTest, ARuntimeThatOpensItselfOrBreaksIsStoppedAndTheNextPressGoesOn)
{
    for (const auto &[what, words] :
         {std::pair{u"open"_s, u"The local AI runtime opened itself to your network, so it was stopped."_s},
          {u"broken"_s, u"The local AI runtime stopped right after"_s}}) {
        play(what);
        press();
        EXPECT_TRUE(service->phase().text.startsWith(words)) << service->phase().text.toStdString();
        EXPECT_EQ(alive(), 0);
        QFile::remove(home.filePath(what));
        press();
        EXPECT_EQ(service->phase().kind, Kind::ready);
        service->stop();
        settle();
    }
    EXPECT_TRUE(log().contains("runtime: it is broken"));
    EXPECT_EQ(releases->requests().size(), 1U) << "what is installed is not fetched again";
}

TEST_F(LocalModelServiceTest, ARuntimeWhosePlaceSomebodyElseHoldsAsWellIsStopped)
{
    QTcpServer other; // where a name of this machine may lead first
    if (!other.listen(QHostAddress::LocalHostIPv6, static_cast<quint16>(values.port())))
        GTEST_SKIP() << "this machine has no IPv6";
    press();
    EXPECT_TRUE(service->phase().text.startsWith(u"Another program takes connections"_s));
    EXPECT_EQ(alive(), 0);
    other.close();
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
}

TEST_F(LocalModelServiceTest, AMissingIdentityKeyIsMadeAnewByARestart)
{
    play(u"keyless"_s);
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
    EXPECT_TRUE(log().contains("identity key missing under our runtime: restarting it"));
    EXPECT_EQ(pids().size(), 4);
}

TEST_F(LocalModelServiceTest, AFoundRuntimeIsTakenAndAFullDiskStopsBeforeAnythingIsFetched)
{
    machine.disk = ModelLadder::need(u"llama3.2:1b"_s) - 1;
    press();
    EXPECT_EQ(service->phase().text,
              u"Not enough free disk space for a local AI model. Free up at least 3.3 GB and try again."_s);
    machine.disk = ModelLadder::need(u"llama3.2:1b"_s);
    QFile::copy(QStringLiteral(MORVANE_SCRIPTED_RUNTIME), values.foundRuntimes.first());
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
    EXPECT_TRUE(releases->requests().empty());
    EXPECT_TRUE(lines.lines().contains(u"ai-provider: Using existing local AI runtime at "_s +
                                       values.foundRuntimes.first()));
}

} // namespace morvane
