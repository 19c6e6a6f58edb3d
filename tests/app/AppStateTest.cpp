#include "app/AppState.h"

#include "app/AppDelegate.h"
#include "app/GhostQuestion.h"
#include "app/WhatChangedNotice.h"
#include "memory/MemoryStore.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/SettingsStore.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class AppStateTest : public testing::Test {
protected:
    AppStateTest() { commandLine.profile = profile.path(); }

    void start(AppState::Host host = AppState::Host::application)
    {
        state.reset();
        state = std::make_unique<AppState>(commandLine, host, clock, AppState::Secrets{keychain, keychain});
    }

    std::unique_ptr<UserDefaultsSettingsRepository>
    defaults(const QString &domain = Product::serviceName) const
    {
        return std::make_unique<UserDefaultsSettingsRepository>(
            UserDefaultsSettingsRepository::path(commandLine.folders(), domain));
    }

    QTemporaryDir profile;
    CommandLine commandLine;
    ManualClock clock;
    InMemoryKeychainService keychain;
    std::unique_ptr<AppState> state;
};

TEST_F(AppStateTest, AFirstStartOpensAnEmptyChatOnDiskAndTellsNothingOfChanges)
{
    start();
    EXPECT_FALSE(state->startupError());
    EXPECT_TRUE(QFileInfo::exists(ChatStoreLocation::storePath(commandLine.folders())));
    EXPECT_EQ(state->chat().messages()->rowCount(), 0);
    EXPECT_EQ(state->repository().count(), 1);
    EXPECT_TRUE(keychain.read(LocalDataVault::keyAccount));
    state->start();
    EXPECT_EQ(state->shell().questionTitle(), QString());
}

TEST_F(AppStateTest, MovesWhatOlderBuildsLeftBeforeSettingsAreRead)
{
    defaults(u"ai.quelmarfolk.macos"_s)->setString(u"aiModel"_s, u"carried over"_s);
    keychain.addSecret(u"com.morvane.Quelmar"_s, {u"ai-provider-api-key"_s, u"old key"_s});
    const QString departed = commandLine.folders().data + u"/Morvane/routines.json"_s;
    PrivateFile::write(departed, "{}");
    const LogCapture log;
    start();
    EXPECT_EQ(state->settings().model(), u"carried over"_s);
    EXPECT_EQ(keychain.read(u"ai-provider-api-key"_s), u"old key"_s);
    EXPECT_FALSE(QFileInfo::exists(departed));
    EXPECT_TRUE(
        log.lines().contains(u"app: Completed migration from the legacy bundle identifier"_s) ||
        log.lines().contains(u"persistence: Completed migration from the legacy bundle identifier"_s));
}

TEST_F(AppStateTest, NotesOfOlderBuildsAreSealedThenFoldedIntoTheProfilesOwn)
{
    const QString folder = commandLine.folders().data + u"/ai.morvane.macos/"_s;
    PrivateFile::write(folder + u"memory-work.md"_s, "- works nights\n");
    start();
    ASSERT_EQ(state->memory().facts().size(), 1U);
    EXPECT_EQ(state->memory().facts().front().text, u"works nights"_s);
    EXPECT_TRUE(QFileInfo::exists(folder + u"memory.md"_s));
    EXPECT_FALSE(QFileInfo::exists(folder + u"memory-work.md"_s));
}

TEST_F(AppStateTest, UnderATestHostNothingOfThePersonsIsMoved)
{
    defaults(u"ai.quelmarfolk.macos"_s)->setString(u"aiModel"_s, u"stays"_s);
    const QString departed = commandLine.folders().data + u"/Morvane/routines.json"_s;
    PrivateFile::write(departed, "{}");
    start(AppState::Host::test);
    EXPECT_EQ(state->settings().model(), QString());
    EXPECT_TRUE(QFileInfo::exists(departed));
}

TEST_F(AppStateTest, ATestHostSkipsTheWindow)
{
    for (const auto host : {AppState::Host::application, AppState::Host::test}) {
        start(host);
        int windows = 0;
        QObject::connect(state.get(), &AppState::mainWindowRequested, [&] { ++windows; });
        AppDelegate delegate(*qGuiApp, *state);
        const LogCapture log;
        delegate.didFinishLaunching();
        const bool skips = host == AppState::Host::test;
        EXPECT_EQ(windows, skips ? 0 : 1);
        EXPECT_EQ(log.lines().contains(u"app: Unit-test host detected; skipping UI startup"_s), skips);
    }
}

TEST_F(AppStateTest, AStoreThatWontOpenStillBringsUpAChatAndIsLeftAlone)
{
    const QString path = ChatStoreLocation::storePath(commandLine.folders());
    const QByteArray broken(4096, 'x');
    PrivateFile::write(path, broken);
    start();
    ASSERT_TRUE(state->startupError());
    EXPECT_EQ(state->shell().startupError(), u"Local storage could not be opened."_s);
    EXPECT_FALSE(state->shell().startupSuggestion().isEmpty());
    EXPECT_NE(state->chat().conversation(), nullptr);
    state->willTerminate();
    EXPECT_EQ(PrivateFile::read(path, 1 << 20), broken);
}

TEST_F(AppStateTest, TheNoticeOfWhatChangedIsShownOnceToWhoHadChats)
{
    start();
    state.reset();
    auto flags = defaults();
    flags->remove(u"didDecideWhatChangedNotice.v1"_s); // as an older build left it
    flags->remove(u"showWhatChangedNotice.v1"_s);
    flags.reset();
    start();
    state->start();
    EXPECT_EQ(state->shell().questionTitle(), u"What changed in MorvaneGPT"_s);
    for (const QString &line : WhatChangedNotice::lines())
        EXPECT_TRUE(state->shell().questionText().contains(line));
    state->shell().answerQuestion(0);
    start();
    state->start();
    EXPECT_EQ(state->shell().questionTitle(), QString());
}

TEST_F(AppStateTest, TheSwitchShowsTheWelcomeFlowAgain)
{
    start();
    state->settings().setOnboardingComplete(true);
    start();
    EXPECT_TRUE(state->settings().onboardingComplete());
    commandLine.resetOnboarding = true;
    start();
    EXPECT_FALSE(state->settings().onboardingComplete());
}

TEST_F(AppStateTest, AKeyThatHasGoneIsAnErrorAndNothingIsOverwritten)
{
    start();
    state->chat().sendMessage(u"precious"_s, std::nullopt);
    state->willTerminate();
    state->settings().setOnboardingComplete(true);
    state.reset();
    TestWait::settle();
    keychain.remove(LocalDataVault::keyAccount);
    start();
    EXPECT_EQ(keychain.read(LocalDataVault::keyAccount), std::nullopt) << "no new key takes its place";
}

// A Ghost chat with words in it.
class Ghost final : public GhostKeeping {
public:
    [[nodiscard]] bool holdsMessages() const override { return full; }
    void drop() override { ending = u"dropped"_s; }
    void keep() override { ending = u"kept"_s; }

    bool full = true;
    QString ending;
};

TEST_F(AppStateTest, QuittingAsksAboutAGhostChatWithMessages)
{
    start();
    Ghost ghost;
    EXPECT_EQ(state->shouldTerminate(), AppState::Termination::now);
    state->setGhost(&ghost);
    int quits = 0;
    QObject::connect(state.get(), &AppState::quitConfirmed, [&] { ++quits; });
    const auto answer = [&](const QString &button) {
        EXPECT_EQ(state->shouldTerminate(), AppState::Termination::cancel);
        EXPECT_EQ(state->shell().questionTitle(), u"Drop this Ghost chat?"_s);
        state->shell().answerQuestion(static_cast<int>(state->shell().questionButtons().indexOf(button)));
    };
    answer(u"Cancel"_s);
    EXPECT_EQ(quits, 0);
    EXPECT_EQ(ghost.ending, QString());
    answer(u"Keep"_s);
    EXPECT_EQ(ghost.ending, u"kept"_s);
    answer(u"Drop"_s);
    EXPECT_EQ(ghost.ending, u"dropped"_s);
    EXPECT_EQ(quits, 2);
    ghost.full = false;
    EXPECT_EQ(state->shouldTerminate(), AppState::Termination::now);
}

TEST(GhostQuestionTest, ALockedApplicationOffersNoKeep)
{
    EXPECT_EQ(GhostQuestion::ask(false).buttons(), (QStringList{u"Drop"_s, u"Keep"_s, u"Cancel"_s}));
    EXPECT_EQ(GhostQuestion::ask(false).text,
              u"It was never saved, so it goes when you leave it. Keep it first if you want it back."_s);
    EXPECT_EQ(GhostQuestion::ask(true).buttons(), (QStringList{u"Drop"_s, u"Cancel"_s}));
    EXPECT_EQ(GhostQuestion::ask(true).text,
              u"It was never saved, so it goes when you leave it. To keep it, cancel and unlock first."_s);
}

} // namespace

} // namespace morvane
