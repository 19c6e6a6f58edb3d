#include "app/AppState.h"

#include "ai/agent/AgentFixture.h"
#include "ai/routing/AIRequestRouter.h"
#include "app/AppDelegate.h"
#include "app/MainWindowController.h"
#include "app/WhatChangedNotice.h"
#include "async/Work.h"
#include "memory/MemoryStore.h"
#include "models/Conversation.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/ConversationRepository.h"
#include "persistence/Database.h"
#include "persistence/SettingsStore.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "security/InMemoryKeychainService.h"
#include "security/LocalDataVault.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"
#include "support/WindowDriver.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Identifier.h"
#include "utils/text/Product.h"
#include "view_models/ShellViewModel.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/chat/NotificationService.h"
#include "view_models/sidebar/ConversationListModel.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class Posting final : public NotificationPosting {
public:
    void post(const DesktopNotice &) override {}
    void withdraw(const QString &key) override { withdrawn += key; }

    QStringList withdrawn;
};

class AppStateTest : public testing::Test {
protected:
    AppStateTest() { commandLine.profile = profile.path(); }
    void TearDown() override
    {
        state.reset();
        TestWait::settle(); // what was under way comes to its end
    }

    void start(Host host = Host::application)
    {
        state.reset();
        work.emplace(clock);
        state = std::make_unique<AppState>(commandLine, host, clock, Secrets{keychain, keychain}, *work,
                                           &notifications);
    }

    // As the person's quit; what was stored is in the file itself.
    void quit()
    {
        state->willTerminate();
        TestWait::settle();
        state.reset();
        Database::open(storePath(), Database::Access::ReadWrite).execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    [[nodiscard]] QString storePath() const { return ChatStoreLocation::storePath(commandLine.folders()); }
    [[nodiscard]] ChatViewModel &chat() const { return *state->presentation().chat; }
    [[nodiscard]] ShellViewModel &shell() const { return *state->presentation().shell; }
    void say(const QString &words) const { chat().sendMessage(words, std::nullopt); }

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
    Posting posting;
    NotificationService notifications{posting};
    std::optional<Work> work;
    std::unique_ptr<AppState> state;
};

TEST_F(AppStateTest, AFirstStartOpensAnEmptyChatOnDiskAndTellsNothingOfChanges)
{
    commandLine.devRelay = DevRelay::Origin{DevRelay::Loopback::ipv4, 9}; // counts in no deployment but one
    start();
    EXPECT_TRUE(state->assistant().router->sources().back().problem.value_or(u""_s).contains(u"build"_s));
    EXPECT_FALSE(state->storage().settings->hostedRelayStateKnown());
    EXPECT_FALSE(state->storage().startupError);
    EXPECT_TRUE(QFileInfo::exists(storePath()));
    EXPECT_EQ(chat().messages()->rowCount(), 0);
    EXPECT_EQ(state->storage().repository->count(), 1);
    EXPECT_TRUE(keychain.read(LocalDataVault::keyAccount));
    state->start();
    EXPECT_EQ(shell().questionTitle(), QString());
    for (const bool isReset : {false, true}) {
        state->storage().settings->setOnboardingComplete(true);
        commandLine.resetOnboarding = isReset;
        start();
        EXPECT_EQ(state->storage().settings->onboardingComplete(), !isReset);
    }
}

TEST_F(AppStateTest, WhatOlderBuildsLeftIsMovedSealedAndRemovedOnceAndNeverUnderATestHost)
{
    const QString support = commandLine.folders().data + u"/Morvane/"_s;
    const QString notes = commandLine.folders().data + u"/ai.morvane.macos/"_s;
    const QString list = u"accepted-servers.sealed"_s;
    const QString developmentList = u"accepted-servers-dev.sealed"_s;
    const QStringList departed{support + u"routines.json"_s, support + u"terminal"_s, support + list,
                               support + u"venice-measurements.json"_s,
                               notes + u"venice-measurements.json"_s};
    const QString kept = support + u"code.json"_s; // nobody reads it any more, and nobody may
    const QByteArray readable = "- works nights\n";
    for (const QString &path : departed + QStringList{kept, notes + u"memory-work.md"_s})
        PrivateFile::write(path, readable);
    PrivateFile::write(support + developmentList, "older");
    PrivateFile::write(notes + developmentList, "newer");
    defaults(u"ai.quelmarfolk.macos"_s)->setString(u"aiModel"_s, u"carried over"_s);
    keychain.addSecret(u"com.morvane.Quelmar"_s, {u"ai-provider-api-key"_s, u"old key"_s});
    const auto isThere = [](const QString &path) { return QFileInfo::exists(path); };

    start(Host::test);
    EXPECT_EQ(state->storage().settings->model(), QString());
    EXPECT_TRUE(std::all_of(departed.begin(), departed.end(), isThere));
    EXPECT_EQ(PrivateFile::read(kept, 100), readable);

    start();
    EXPECT_EQ(state->storage().settings->model(), u"carried over"_s) << "before the settings are read";
    EXPECT_EQ(keychain.read(u"ai-provider-api-key"_s), u"old key"_s);
    EXPECT_FALSE(std::any_of(departed.begin(), departed.end(), isThere));
    EXPECT_NE(PrivateFile::read(kept, 1000), readable);
    ASSERT_EQ(state->assistant().memory->facts().size(), 1U);
    EXPECT_EQ(state->assistant().memory->facts().front().text, u"works nights"_s);
    EXPECT_FALSE(isThere(notes + u"memory-work.md"_s));
    EXPECT_EQ(PrivateFile::read(notes + list, 100), readable);
    EXPECT_EQ(PrivateFile::read(notes + developmentList, 100), "newer");
}

TEST_F(AppStateTest, TextsThatAnOlderBuildLeftReadableAreSealedAtTheNextStart)
{
    start();
    state.reset();
    Database::open(storePath(), Database::Access::ReadWrite)
        .execute("UPDATE Conversation SET sealedTitle = 'readable'");
    const LogCapture log;
    start();
    EXPECT_EQ(log.lines().filter(u"Sealed 1 record(s)"_s).size(), 1);
}

TEST_F(AppStateTest, ChatsGoWhenTheirTimeIsOver)
{
    start();
    say(u"old words"_s);
    const QUuid id = state->storage().repository->mostRecent()->id();
    state->storage().settings->setConversationRetention(ConversationRetention::sevenDays);
    for (const auto &[days, isKept] : {std::pair{std::chrono::days(6), true},
                                       {std::chrono::days(2), false},
                                       {std::chrono::days(8), false}}) {
        state->willTerminate();
        TestWait::settle();
        clock.advance(days);
        state.reset();
        posting.withdrawn.clear();
        start();
        EXPECT_EQ(state->storage().repository->find(id) != nullptr, isKept);
        EXPECT_EQ(posting.withdrawn.contains(u"chat-"_s + Identifier::text(id)), days != std::chrono::days(8))
            << "it is open, or goes, or has gone before";
        const auto &presentation = state->presentation();
        EXPECT_TRUE(state->storage().repository->find(QUuid(presentation.chat->conversationId())))
            << "the chat to write in is none of those that went";
        EXPECT_EQ(presentation.conversations->rowCount(), state->storage().repository->count());
    }
}

// Until the person has decided, all that is written goes beside a damaged file.
TEST_F(AppStateTest, DamageIsToldOfAndTheFileStaysAsItIsUntilThePersonHasDecided)
{
    const QString path = storePath();
    const auto bytes = [](const QString &file) {
        return PrivateFile::read(file, 1 << 24).value_or(QByteArray());
    };
    const auto startAndTell = [&] {
        start();
        state->start();
        TestWait::until([&] { return !shell().noticeTitle().isEmpty(); });
        EXPECT_EQ(shell().noticeTitle(), u"The file with your chats is damaged."_s);
    };
    start();
    ConversationRepository &repository = *state->storage().repository;
    const auto chat = repository.mostRecent();
    for (int i = 0; i < 60; ++i)
        repository.add(repository.makeMessage({.id = QUuid::createUuid(), .content = QString(900, u'x')}),
                       *chat);
    quit();
    QFile file(path);
    ASSERT_TRUE(file.open(QFile::ReadWrite) && file.seek(file.size() / 2 / 4096 * 4096));
    file.write(QByteArray(4096, '\xff'));
    file.close();
    const QByteArray damaged = bytes(path);

    startAndTell();
    say(u"said meanwhile"_s);
    state->willTerminate();
    TestWait::settle();
    state.reset();
    EXPECT_EQ(bytes(path), damaged);

    startAndTell();
    bool quits = false;
    QObject::connect(state.get(), &AppState::quitConfirmed, [&] { quits = true; });
    shell().answerNotice(0);
    EXPECT_TRUE(shell().noticeText().contains(path + u".damaged-1"_s));
    shell().answerNotice(0);
    EXPECT_TRUE(quits);
    start();
    EXPECT_EQ(bytes(path + u".damaged-1"_s), damaged);
    EXPECT_EQ(state->storage().repository->count(), 1);
}

TEST_F(AppStateTest, ThePersonIsToldOnceWhereChatsOfAnOlderVersionWereLeft)
{
    const QString old = ChatStoreLocation::oldStorePath(commandLine.folders());
    for (const bool isOld : {true, false}) {
        start();
        say(u"words"_s);
        quit();
        if (isOld) {
            ASSERT_TRUE(QFile::rename(storePath(), old));
        }
    }
    defaults()->remove(ChatStoreLocation::movedFlagKey);
    const auto text = [this] {
        start();
        state->start();
        return shell().noticeText();
    };
    EXPECT_TRUE(text().contains(old));
    EXPECT_TRUE(text().contains(old)) << "until it is answered";
    shell().answerNotice(0);
    EXPECT_EQ(text(), QString());
}

TEST_F(AppStateTest, AStoreThatWontOpenStillBringsUpAChatAndIsLeftAlone)
{
    const QString path = storePath();
    const QByteArray broken(4096, 'x');
    PrivateFile::write(path, broken);
    start();
    ASSERT_TRUE(state->storage().startupError);
    EXPECT_EQ(shell().startupError(), u"Local storage could not be opened."_s);
    EXPECT_FALSE(shell().startupSuggestion().isEmpty());
    EXPECT_NE(chat().conversation(), nullptr);
    state->willTerminate();
    EXPECT_EQ(PrivateFile::read(path, 1 << 20), broken);
}

TEST_F(AppStateTest, TheNoticeOfWhatChangedIsShownOnceToWhoHadChats)
{
    const auto question = [this] {
        start();
        const QString path =
            UserDefaultsSettingsRepository::path(commandLine.folders(), Product::serviceName);
        EXPECT_TRUE(
            PrivateFile::read(path, 10'000).value_or(QByteArray()).contains("didDecideWhatChangedNotice"))
            << "on disk at once";
        state->start();
        return shell().questionTitle();
    };
    PrivateFile::write(ChatStoreLocation::oldStorePath(commandLine.folders()), "chats of an older build");
    EXPECT_EQ(question(), u"What changed in MorvaneGPT"_s);
    for (const QString &line : WhatChangedNotice::lines())
        EXPECT_TRUE(shell().questionText().contains(line));
    EXPECT_EQ(question(), u"What changed in MorvaneGPT"_s) << "until it is answered";
    shell().answerQuestion(0);
    EXPECT_EQ(question(), QString());
}

TEST_F(AppStateTest, AKeyThatHasGoneIsRefusedOrIsNoKeyIsNeverReplacedWhereSomethingIsSealed)
{
    const QString account = LocalDataVault::keyAccount;
    keychain.save(u"no key"_s, account);
    start(); // replaced: nothing is sealed yet
    const QString key = keychain.read(account).value();
    EXPECT_TRUE(shell().unsealedNotice().isEmpty());
    const QString leftover = commandLine.folders().data + u"/Morvane/code.json"_s;
    for (const QString &trouble : {u"refused"_s, u"gone"_s, u"no key"_s}) {
        SCOPED_TRACE(trouble.toStdString());
        state.reset();
        PrivateFile::write(leftover, "of an older build");
        keychain.save(u"no key"_s, account);
        if (trouble == "refused"_L1)
            keychain.setFailure(KeychainError(KeychainError::Operation::Read, KeychainStatus::NotAvailable));
        else if (trouble == "gone"_L1)
            keychain.remove(account);
        start();
        keychain.setFailure({});
        if (trouble == "refused"_L1)
            keychain.remove(account);
        state->assistant().memory->remember(u"would be sealed"_s);
        EXPECT_NE(keychain.read(account).value_or(u"no key"_s).size(), key.size());
        TestWait::settle();
        EXPECT_FALSE(shell().unsealedNotice().isEmpty());
    }
    keychain.save(key, account);
    start();
    EXPECT_NE(PrivateFile::read(leftover, 100), QByteArray("of an older build"));
}

// The first of three calls waits for the person, who goes. The others need no yes, or would ask for one.
TEST_F(AppStateTest, NothingFollowsAStopThatComesWhileAnApprovalWaits)
{
    using Chat = ChatViewModel;
    const std::function<void(Chat &)> ways[] = {
        [](Chat &chat) {
            chat.decline();
            chat.stopResponding();
        },
        [](Chat &chat) { chat.newConversation(); },
        [](Chat &chat) { chat.remove(chat.conversationId()); },
        [this](Chat &) { state->willTerminate(); },
    };
    commandLine.practiceServer = u"http://127.0.0.1:9/v1"_s; // would answer searches
    start(Host::test);
    Chat &chat = *state->presentation().chat;
    const AIStream::ToolCalls calls{{{u"1"_s, u"search_web"_s, uR"({"query":"ferns"})"_s},
                                     {u"2"_s, u"remember"_s, uR"({"fact":"They left."})"_s},
                                     {u"3"_s, u"search_web"_s, uR"({"query":"mosses"})"_s}}};
    state->assistant().router->injectProvider(
        std::make_shared<ScriptedModel>(std::vector<ScriptedModel::Round>{{{calls}}}));
    QSignalSpy broughtUp(state.get(), &AppState::mainWindowRequested);
    for (const auto &go : ways) {
        chat.sendMessage(u"question"_s, std::nullopt);
        TestWait::settle();
        ASSERT_TRUE(chat.hasApproval());
        const auto reply = chat.messages()->messages().back();
        go(chat);
        TestWait::settle();
        EXPECT_EQ(reply->status(), MessageStatus::cancelled);
        EXPECT_FALSE(chat.hasApproval());
        EXPECT_TRUE(state->assistant().memory->facts().empty());
    }
    EXPECT_EQ(broughtUp.count(), std::ssize(ways)) << "for each question, and for no other";
}

TEST_F(AppStateTest, QuittingAsksAboutAGhostChatWithMessages)
{
    start();
    const auto beginGhost = [&] {
        chat().ghosts()->newGhostChat();
        EXPECT_EQ(state->shouldTerminate(), AppState::Termination::now) << "nothing would be lost";
        say(u"boo"_s);
        return chat().conversation()->id();
    };
    EXPECT_EQ(state->shouldTerminate(), AppState::Termination::now);
    QSignalSpy quits(state.get(), &AppState::quitConfirmed);
    QUuid ghost = beginGhost();
    const struct {
        int button;
        bool isLocked, quits, isKept;
    } rows[]{{2, false, false, false}, {-1, false, false, false}, {1, true, false, false},
             {1, false, true, true},   {0, false, true, false},   {0, true, true, false}};
    for (const auto &[button, isLocked, hasQuit, isKept] : rows) {
        if (!chat().ghosts()->isOn())
            ghost = beginGhost();
        quits.clear();
        isLocked ? state->storage().vault->lock() : state->storage().vault->unlock();
        EXPECT_EQ(state->shouldTerminate(), AppState::Termination::cancel);
        EXPECT_EQ(shell().questionTitle(), u"Drop this Ghost chat?"_s);
        EXPECT_EQ(shell().questionButtons().contains(u"Keep"_s), !isLocked);
        EXPECT_EQ(shell().questionText().endsWith(u"To keep it, cancel and unlock first."_s), isLocked);
        shell().answerQuestion(button);
        EXPECT_EQ(quits.count(), hasQuit ? 1 : 0);
        state->storage().vault->unlock();
        EXPECT_EQ(state->storage().repository->find(ghost) != nullptr, isKept);
        EXPECT_EQ(chat().ghosts()->isOn(), !hasQuit);
    }
}

// The key's own road: key, window, engine, delegate, and whatever else hears of a quit.
TEST_F(AppStateTest, TheQuitKeyKeepsTheWindowWhileAQuestionIsOpen)
{
    start();
    chat().ghosts()->newGhostChat();
    say(u"boo"_s);
    MainWindowController controller(state->presentation(), MainWindowController::prepareEngine());
    AppDelegate delegate(*qGuiApp, *state);
    QObject::connect(&controller.engine(), &QQmlEngine::quit, &delegate, &AppDelegate::requestQuit);
    controller.show();
    WindowDriver::settle();
    const auto pressQuit = [&] {
        QTimer::singleShot(0, &delegate, [&] {
            WindowDriver::press(controller.window(), Qt::Key_Q, Qt::ControlModifier);
            delegate.requestQuit(); // a panel may have kept the key for itself
            QMetaObject::invokeMethod(
                qGuiApp, [] { QCoreApplication::exit(7); }, Qt::QueuedConnection);
        });
        return QGuiApplication::exec();
    };
    for (const auto &title : {u"Drop this Ghost chat?"_s, u"Another question?"_s}) {
        EXPECT_EQ(pressQuit(), 7);
        EXPECT_EQ(controller.window()->visibility(), QWindow::Windowed);
        EXPECT_EQ(shell().questionTitle(), title);
        shell().answerQuestion(2);
        shell().ask(u"Another question?"_s, {}, {u"Yes"_s}, {});
    }
}

TEST_F(AppStateTest, QuittingEndsTheProgramAndStoresWhatHadArrivedUnlessThePersonHasToBeAsked)
{
    start();
    chat().ghosts()->newGhostChat();
    auto delegate = std::make_unique<AppDelegate>(*qGuiApp, *state);
    EXPECT_FALSE(QGuiApplication::quitOnLastWindowClosed());
    ScriptedServer slow([](ScriptedServer::Connection &connection) {
        while (connection.readRequest().value_or(ScriptedServer::Request{"POST "}).method() != "POST")
            connection.send(ScriptedServer::response("404 Not Found", {})); // it is asked what it is first
        connection.send("HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n\r\n"
                        "data: {\"choices\":[{\"delta\":{\"content\":\"half a\"}}]}\n\n");
        connection.awaitClose();
    });
    state->storage().settings->setBaseURLString(slow.url(u"/v1"_s).toString());
    state->storage().settings->setModel(u"practice"_s);
    say(u"a turn at work"_s);
    EXPECT_TRUE(chat().isResponding());
    const auto *messages = chat().messages();
    TestWait::until([&] {
        const auto *indicator = messages->indicator(messages->messages().back()->id());
        return std::holds_alternative<ReplyIndicator::Streaming>(indicator->state());
    });
    const LogCapture log;
    delegate->requestQuit();
    TestWait::settle();
    EXPECT_TRUE(chat().isResponding()) << "the person is asked";
    QTimer::singleShot(0, delegate.get(), [&] { shell().answerQuestion(1); });
    EXPECT_EQ(QGuiApplication::exec(), 0);
    EXPECT_FALSE(chat().isResponding());
    EXPECT_EQ(log.lines().count(u"app: Application will terminate"_s), 1);

    const QUuid id = chat().conversation()->id();
    delegate.reset();
    start(); // no event of the former run was handled after its quit
    const auto reply = state->storage().repository->find(id)->messages().back();
    EXPECT_EQ(reply->content(), u"half a"_s);
    EXPECT_EQ(reply->status(), MessageStatus::cancelled);
}

} // namespace

} // namespace morvane
