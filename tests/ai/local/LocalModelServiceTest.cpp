#include "ai/local/LocalModelService.h"

#include "TestFiles.h"
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
#include "support/RuntimeHost.h"

#include <QDir>
#include <QFileInfo>
#include <QTcpServer>
#include <QTemporaryDir>

#include <algorithm>
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

} // namespace

// The whole press against the practice host and the runtime that it gives out. How a download, an archive and
// a disk fail is in LocalPressTest.
class LocalModelServiceTest : public testing::Test {
protected:
    LocalModelServiceTest()
    {
        qputenv("HOME", home.path().toUtf8());
        values = LocalRuntimeValues::ofThisBuild(SupportFolders::inProfile(home.path()))
                     .withDevelopmentFile(host.developmentFile())
                     .value();
        values.guard = QStringLiteral(MORVANE_RUNTIME_GUARD);
        start();
    }
    ~LocalModelServiceTest() override
    {
        service.reset();
        TestWait::settle();
        work.end();
        TestWait::settle();
        EXPECT_EQ(running(), 0U) << "a process was left";
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

    void press()
    {
        service->setUp();
        settle();
    }
    void settle()
    {
        TestWait::until([this] { return !service->isBusy(); });
    }

    std::size_t running() const { return RuntimeHost::processesBelow(home.path()).size(); }
    std::ptrdiff_t downloads()
    {
        return std::ranges::count_if(host.requests(), [](const auto &request) {
            return request.target.startsWith("/release-assets/");
        });
    }
    QByteArray log() const { return TestFiles::read(values.setupLog()); }

    const QByteArray formerHome = qgetenv("HOME");
    QTemporaryDir home;
    RuntimeHost host;
    LogCapture lines;
    SystemClock clock;
    InMemoryKeychainService keychain;
    LocalDataVault vault{keychain};
    InMemorySettingsRepository repository;
    SettingsStore settings{repository};
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    TestMachine machine;
    LocalRuntimeValues values;
    Work work{clock};
    std::unique_ptr<LocalModelService> service;
    std::vector<Kind> phases;
};

TEST_F(LocalModelServiceTest, OnePressGoesFromNothingToAModelAndTheNextStartNeedsNone)
{
    host.play(u"talkative"_s);
    const SetupPlan plan = TestWait::await(service->plan({}));
    EXPECT_EQ(plan.runtime, SetupPlan::Runtime::toDownload);
    EXPECT_EQ(plan.toFetch(), *values.archive->bytes + ModelLadder::size(u"llama3.2:1b"_s));
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
    EXPECT_FALSE(QFileInfo::exists(RuntimeDownload::path(values)));
    EXPECT_TRUE(log().contains("runtime: level=INFO msg=\"Listening"));
    HttpRequest chat{.method = "POST", .url = QUrl(service->baseURL() + u"/chat/completions"_s)};
    static_cast<void>(TestWait::await(network.session(EgressFeature::aiModel, {})->send(chat, {})));
    TestWait::settle();

    start(); // the program ends and starts again
    EXPECT_EQ(running(), 0U);
    EXPECT_FALSE(log().contains("chat request")) << "what it says once it may be given a chat";
    phases.clear();
    service->prepare();
    settle();
    EXPECT_EQ(phases, (std::vector{Kind::startingRuntime, Kind::ready}));
    EXPECT_EQ(downloads(), 1);

    host.play(u"pull-error"_s);
    QString sentence;
    QObject::connect(service.get(), &LocalModelService::failed, service.get(),
                     [&](const QString &words) { sentence = words; });
    service->pull(u" other "_s);
    EXPECT_EQ(service->model(), u"llama3.2:1b"_s) << "it goes on answering";
    settle();
    EXPECT_TRUE(sentence.startsWith(u"Couldn't download the model other: pull model manifest"_s))
        << sentence.toStdString();
    EXPECT_EQ(service->phase().kind, Kind::ready);

    service->remove(u"llama3.2:1b"_s);
    settle();
    EXPECT_TRUE(service->models().empty());
    EXPECT_EQ(settings.model(), QString());
    EXPECT_EQ(service->phase().kind, Kind::notSetUp);
    service->stop();
    settle();
    EXPECT_EQ(running(), 0U);
}

TEST_F(LocalModelServiceTest, ASwappedRuntimeNeverRuns)
{
    press();
    start();
    TestFiles::write(values.binary(), TestFiles::read(values.binary()) + "# swapped\n");
    service->prepare();
    settle();
    EXPECT_EQ(service->phase().text,
              u"The local AI runtime on this computer was not the one MorvaneGPT installed, so it "
              "was removed. Set up local AI again to reinstall it."_s);
    EXPECT_EQ(host.journal(u"serve"_s).size(), 1U);
    EXPECT_FALSE(QFileInfo::exists(values.binary()));
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
}

TEST_F(LocalModelServiceTest, ARuntimeThatOpensItselfOrDiesIsStoppedAndTheNextPressGoesOn)
{
    for (const auto &[scenario, words] :
         {std::pair{u"all-interfaces"_s,
                    u"The local AI runtime opened itself to your network, so it was stopped."_s},
          {u"dies-at-start"_s, u"The local AI runtime stopped right after"_s}}) {
        host.play(scenario);
        press();
        EXPECT_TRUE(service->phase().text.startsWith(words)) << service->phase().text.toStdString();
        EXPECT_EQ(running(), 0U);
        host.play(u"good"_s);
        press();
        EXPECT_EQ(service->phase().kind, Kind::ready);
        service->stop();
        settle();
    }
    EXPECT_TRUE(log().contains("runtime: Error: the practice runtime was told to end."));
    EXPECT_EQ(downloads(), 1) << "what is installed is not fetched again";
}

TEST_F(LocalModelServiceTest, ARuntimeWhosePlaceSomebodyElseHoldsAsWellIsStopped)
{
    QTcpServer other; // where a name of this machine may lead first
    if (!other.listen(QHostAddress::LocalHostIPv6, static_cast<quint16>(values.port())))
        GTEST_SKIP() << "this machine has no IPv6";
    press();
    EXPECT_TRUE(service->phase().text.startsWith(u"Another program takes connections"_s));
    EXPECT_EQ(running(), 0U);
}

TEST_F(LocalModelServiceTest, AMissingIdentityKeyIsMadeAnewByARestart)
{
    host.play(u"lost-key-once"_s);
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
    EXPECT_TRUE(log().contains("identity key missing under our runtime: restarting it"));
    EXPECT_EQ(host.journal(u"serve"_s).size(), 2U);
}

TEST_F(LocalModelServiceTest, AFoundRuntimeIsTakenAndAFullDiskStopsBeforeAnythingIsFetched)
{
    machine.disk = ModelLadder::need(u"llama3.2:1b"_s) - 1;
    press();
    EXPECT_EQ(service->phase().text,
              u"Not enough free disk space for a local AI model. Free up at least 3.3 GB and try again."_s);
    EXPECT_TRUE(host.requests().empty());
    machine.disk = ModelLadder::need(u"llama3.2:1b"_s);
    press();
    service.reset();
    const QString found = home.filePath(u"found"_s);
    QDir().rename(values.folder, found);
    values.foundRuntimes = {found + u"/bin/ollama"_s};
    start();
    press();
    EXPECT_EQ(service->phase().kind, Kind::ready);
    EXPECT_EQ(downloads(), 1);
    EXPECT_TRUE(lines.lines().contains(u"ai-provider: Using existing local AI runtime at "_s +
                                       values.foundRuntimes.first()));
}

} // namespace morvane
