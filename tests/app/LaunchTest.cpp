#include "app/Launch.h"

#include "app/Erasure.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/UserDefaultsSettingsRepository.h"
#include "platform/linux/ProcessPrivacy.h"
#include "security/DataKey.h"
#include "security/FakeSecretStore.h"
#include "security/KeyFile.h"
#include "security/KeychainService.h"
#include "security/LocalDataVault.h"
#include "support/Await.h"
#include "support/FileSpy.h"
#include "support/WindowDriver.h"
#include "utils/files/PrivateFile.h"
#include "utils/text/Product.h"
#include "view_models/chat/ChatViewModel.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQuickItem>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/resource.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class LaunchTest : public testing::Test {
protected:
    LaunchTest()
    {
        commandLine.profile = profile.path();
        commandLine.practiceServer = u"http://localhost:1/v1"_s;
    }
    void TearDown() override { TestWait::settle(); } // what was under way comes to its end
    // The window that has `property`, once it is in view.
    static QQuickWindow *windowWith(const char *property)
    {
        QQuickWindow *found = nullptr;
        EXPECT_TRUE(WindowDriver::eventually([&] {
            for (QWindow *window : QGuiApplication::topLevelWindows()) {
                if (window->isVisible() && window->property(property).isValid())
                    found = qobject_cast<QQuickWindow *>(window);
            }
            return found != nullptr;
        })) << property;
        return found;
    }
    // What the application has put into the window.
    static QQuickItem *contentOf(QQuickWindow *window)
    {
        for (QQuickItem *item : window->property("contentItem").value<QQuickItem *>()->childItems()) {
            if (item->property("chat").isValid())
                return item;
        }
        return nullptr;
    }
    static QVariant valueOf(QQuickWindow *window, const char *object, const char *property)
    {
        return window->property(object).value<QObject *>()->property(property);
    }
    // The window that waits for the person, once it offers that.
    static QQuickWindow *waitingWith(const char *offer)
    {
        QQuickWindow *waiting = windowWith("startup");
        EXPECT_TRUE(waiting &&
                    WindowDriver::eventually([&] { return valueOf(waiting, "startup", offer).toBool(); }))
            << offer;
        WindowDriver::settle();
        return waiting;
    }
    [[nodiscard]] bool hasKeyFile() const
    {
        return QFileInfo::exists(commandLine.folders().data + u"/ai.morvane.macos/keychain.keys"_s);
    }

    QTemporaryDir profile;
    CommandLine commandLine;
};

TEST_F(LaunchTest, AProfileOfItsOwnKeepsItsKeyInAFileAndTalksToThePracticeServer)
{
    for (const auto *name : {"a.md", "b.txt", "c.txt"})
        PrivateFile::write(profile.filePath(QString::fromLatin1(name)), "words");
    commandLine.request.files = {profile.filePath(u"a.md"_s)};
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    // By a second start, while the key is waited for.
    launch.take({.files = {profile.filePath(u"b.txt"_s)}, .activationToken = u"t1"_s});
    EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "t1");
    QQuickWindow *window = windowWith("shell");
    ASSERT_NE(window, nullptr);
    ASSERT_NE(contentOf(window), nullptr);
    AttachmentDesk *desk =
        contentOf(window)->property("chat").value<ChatViewModel *>()->entries()->attachments();
    for (const bool isLater : {false, true}) {
        EXPECT_TRUE(WindowDriver::eventually([&] { return desk->state() == AttachmentDesk::State::Ready; }));
        EXPECT_EQ(desk->name(), isLater ? u"c.txt"_s : u"b.txt"_s);
        launch.take({.files = {profile.filePath(u"c.txt"_s)}});
    }
    EXPECT_EQ(window->title(), u"MorvaneGPT"_s);
    EXPECT_TRUE(hasKeyFile());
    EXPECT_TRUE(valueOf(window, "shell", "keychainNotice").toString().contains(u"is kept in a file"_s));
    EXPECT_EQ(valueOf(window, "settings", "baseURLString"), u"http://localhost:1/v1"_s);
    EXPECT_EQ(valueOf(window, "settings", "model"), u"practice"_s);
    EXPECT_EQ(valueOf(window, "settings", "hostedChatEnabled"), false);
}

TEST_F(LaunchTest, AStartInTheBackgroundMakesItsWindowWhenItIsAskedFor)
{
    commandLine.request.showsWindow = false;
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    const QString store = ChatStoreLocation::storePath(commandLine.folders());
    ASSERT_TRUE(WindowDriver::eventually([&] { return QFileInfo::exists(store); }));
    TestWait::settle();
    EXPECT_TRUE(QGuiApplication::topLevelWindows().isEmpty());
    launch.take({});
    EXPECT_NE(windowWith("shell"), nullptr);
}

TEST_F(LaunchTest, ChatsWithoutTheirKeyStayClosedAndThePersonMayTryAgain)
{
    const QString store = ChatStoreLocation::storePath(commandLine.folders());
    PrivateFile::write(store, "sealed with a key that is gone");
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    QQuickWindow *waiting = waitingWith("canRetry");
    ASSERT_NE(waiting, nullptr);
    EXPECT_FALSE(valueOf(waiting, "startup", "sentence").toString().isEmpty());
    EXPECT_FALSE(hasKeyFile()) << "no new key takes its place";
    QFile::remove(store);
    WindowDriver::press(waiting, Qt::Key_Return); // the way on has the keyboard
    EXPECT_NE(windowWith("shell"), nullptr);
}

TEST_F(LaunchTest, WhoHasLostTheirKeyMayPutTheOldDataAsideAndStartAfresh)
{
    const QString data = commandLine.folders().data;
    PrivateFile::write(ChatStoreLocation::storePath(commandLine.folders()), "sealed with a lost key");
    PrivateFile::write(data + u"/Morvane/Morvane.store-wal"_s, "its latest words");
    PrivateFile::write(data + u"/ai.morvane.macos/memory.md"_s, "KVT1 with a lost key");
    PrivateFile::write(SecretKeeping::keyFilePath(commandLine.folders()), "broken");
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    QQuickWindow *waiting = waitingWith("canStartAfresh");
    ASSERT_NE(waiting, nullptr);
    EXPECT_FALSE(valueOf(waiting, "startup", "canUseFile").toBool());
    WindowDriver::click(WindowDriver::item(waiting, u"startAfresh"_s));
    WindowDriver::settle();
    const QString question = valueOf(waiting, "startup", "question").toString();
    const QString aside = question.section(u'“', 1).section(u'”', 0, 0);
    EXPECT_FALSE(QFileInfo::exists(aside)) << "asked first";
    WindowDriver::click(WindowDriver::item(waiting, u"confirmAfresh"_s));
    QQuickWindow *window = windowWith("shell");
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(valueOf(window, "shell", "questionText").toString().contains(aside)) << aside.toStdString();
    EXPECT_TRUE(hasKeyFile());
    const std::pair<const char *, QByteArray> moved[] = {
        {"/Morvane/Morvane.store", "sealed with a lost key"},
        {"/Morvane/Morvane.store-wal", "its latest words"},
        {"/ai.morvane.macos/memory.md", "KVT1 with a lost key"},
        {"/keychain.keys", "broken"}};
    for (const auto &[name, contents] : moved)
        EXPECT_EQ(PrivateFile::read(aside + QLatin1StringView(name), 100), contents) << name;
}

TEST_F(LaunchTest, WhoDismissesTheFirstPromptMayKeepTheKeyInAFileAndIsNotAskedAgain)
{
    PrivateFile::write(ChatStoreLocation::storePath(commandLine.folders()), {}); // of a start that was killed
    for (const bool isFirst : {true, false}) {
        auto keyring = std::make_unique<FakeSecretStore>();
        keyring->state = SecretStoring::Condition::Locked;
        keyring->refuse(FakeSecretStore::Call::Unlock, KeychainStatus::UserCancelled);
        const auto &prompts = keyring->calls[FakeSecretStore::Call::Unlock];
        Launch launch(*qGuiApp, commandLine, std::move(keyring));
        launch.start();
        if (isFirst) {
            QQuickWindow *waiting = waitingWith("canUseFile");
            ASSERT_NE(waiting, nullptr);
            WindowDriver::click(WindowDriver::item(waiting, u"useFile"_s));
        }
        EXPECT_NE(windowWith("shell"), nullptr);
        EXPECT_TRUE(hasKeyFile());
        EXPECT_EQ(prompts, isFirst ? 1 : 0);
    }
}

TEST_F(LaunchTest, AKeyThatADiskRefusesToTakeStaysInTheFormThatItHad)
{
    KeyFile file(SecretKeeping::keyFilePath(commandLine.folders()));
    file.create();
    FakePresence nobody;
    KeychainService keychain(u"own"_s, file, nobody);
    LocalDataVault vault(keychain);
    const SecretBytes key = vault.key();
    {
        FileSpy spy(profile.path());
        spy.refuse(u"write"_s, ENOSPC);
        EXPECT_THROW(vault.wrapKey(Passphrase(u"six words or so"_s), {8, 1}), KeychainError);
    }
    keychain.clearCache();
    EXPECT_EQ(vault.key().view().toByteArray(), key.view().toByteArray());
}

class ErasureTest : public LaunchTest {
protected:
    ErasureTest()
    {
        commandLine.practiceServer.reset();
        UserDefaultsSettingsRepository(settingsPath()).setBoolean(u"onboardingComplete"_s, true);
    }
    [[nodiscard]] QString settingsPath() const
    {
        return UserDefaultsSettingsRepository::path(commandLine.folders(), Product::serviceName);
    }
    // The paths of all files below the profile that hold the bytes, or are called so.
    [[nodiscard]] QStringList filesWith(const QByteArray &bytes) const
    {
        QStringList found;
        QDirIterator files(profile.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(bytes))
                found += file.fileName();
        }
        return found;
    }
    // Reads the report, and goes on to the welcome of a first start.
    void goOn()
    {
        QQuickWindow *told = waitingWith("canProceed");
        ASSERT_NE(told, nullptr);
        const QStringList report = valueOf(told, "startup", "report").toStringList();
        EXPECT_GE(report.size(), 5);
        EXPECT_TRUE(report.value(0).endsWith(u"The key that your data was encrypted with is gone."_s));
        QMetaObject::invokeMethod(told->property("startup").value<QObject *>(), "proceed");
        QQuickWindow *fresh = windowWith("shell");
        ASSERT_NE(fresh, nullptr);
        auto *settings = fresh->property("models").value<QObject *>()->property("store").value<QObject *>();
        EXPECT_FALSE(settings->property("onboardingComplete").toBool());
    }
};

TEST_F(ErasureTest, LeavesNothingOfThePersonsAndGoesOnAsAfterAFirstStart)
{
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    QQuickWindow *window = windowWith("shell");
    ASSERT_NE(window, nullptr);
    QQuickItem *content = contentOf(window);
    ASSERT_NE(content, nullptr);
    auto *chat = content->property("chat").value<ChatViewModel *>();
    chat->setDraft(u"a marked draft"_s);
    const QByteArray id = chat->conversationId().toUtf8();
    const QByteArray key =
        PrivateFile::read(SecretKeeping::keyFilePath(commandLine.folders()), 10000).value();
    ASSERT_FALSE(filesWith(id.toLower()).isEmpty() && filesWith(id).isEmpty()) << "it is in the store";
    auto *privacy = window->property("privacy").value<QObject *>();
    QMetaObject::invokeMethod(privacy, "eraseAll", Q_ARG(QString, u"no"_s));
    TestWait::settle();
    EXPECT_TRUE(QFileInfo::exists(ChatStoreLocation::storePath(commandLine.folders())));
    QMetaObject::invokeMethod(privacy, "eraseAll", Q_ARG(QString, u" Delete "_s));
    goOn();
    EXPECT_EQ(filesWith(id), QStringList());
    EXPECT_EQ(filesWith(key), QStringList());
    EXPECT_TRUE(QFileInfo::exists(ChatStoreLocation::storePath(commandLine.folders()))) << "a new one";
    EXPECT_TRUE(hasKeyFile());
}

// Killed with its files there, with its files gone, and with its key gone as well.
TEST_F(ErasureTest, ThatWasKilledAtAnyStepIsEndedByTheNextStart)
{
    for (const int step : {0, 1, 2}) {
        SCOPED_TRACE(step);
        {
            UserDefaultsSettingsRepository settings(settingsPath());
            settings.setString(u"model"_s, u"of former days"_s);
            Erasure::begin(settings);
        }
        const QString store = ChatStoreLocation::storePath(commandLine.folders());
        if (step == 0)
            PrivateFile::write(store, "sealed with the former key");
        if (step == 2)
            QFile::remove(SecretKeeping::keyFilePath(commandLine.folders()));
        Launch launch(*qGuiApp, commandLine);
        launch.start();
        goOn();
        EXPECT_EQ(filesWith("of former days"), QStringList());
        EXPECT_EQ(filesWith("sealed with the former key"), QStringList());
        EXPECT_FALSE(Erasure::isUnderway(commandLine.folders()));
    }
}

// What stays is named with its path, and what is said to have gone has.
TEST_F(ErasureTest, TellsWhatADiskOrAKeyringRefusesToLetGo)
{
    const QString store = ChatStoreLocation::storePath(commandLine.folders());
    const QString keyFile = SecretKeeping::keyFilePath(commandLine.folders());
    const auto told = [&](const QString &refused, int status, bool hasKeyring) {
        {
            UserDefaultsSettingsRepository settings(settingsPath());
            Erasure::begin(settings);
        }
        PrivateFile::write(store, "sealed");
        auto keyring = std::make_unique<FakeSecretStore>();
        keyring->state = hasKeyring ? SecretStoring::Condition::Open : SecretStoring::Condition::Absent;
        keyring->refuse(FakeSecretStore::Call::Remove, KeychainStatus::InputOutput);
        if (!hasKeyring)
            KeyFile(keyFile).add(Product::serviceName,
                                 {LocalDataVault::keyAccount, DataKey::print(DataKey::make())});
        std::optional<FileSpy> spy(profile.path());
        if (!refused.isNull())
            spy->refuse(refused, status);
        QStringList report;
        {
            Launch launch(*qGuiApp, commandLine, std::move(keyring));
            launch.start();
            report = valueOf(waitingWith("canProceed"), "startup", "report").toStringList();
        }
        TestWait::settle();
        return report;
    };
    QStringList report = told(u"write"_s, ENOSPC, false);
    EXPECT_TRUE(report.value(0).startsWith(u"Deleted: your chats, "_s)) << report.value(0).toStdString();
    EXPECT_TRUE(report.value(0).endsWith(u"is gone."_s));
    EXPECT_FALSE(QFileInfo::exists(store) || QFileInfo::exists(keyFile) ||
                 QFileInfo(settingsPath()).size() > 0);

    report = told(u"(rename|write (data|.*ini)|unlink (data|.*ini$))"_s, EROFS, false);
    EXPECT_TRUE(report.value(0).startsWith(u"Deleted: what could be deleted of your chats, "_s));
    EXPECT_TRUE(
        report.value(0).endsWith(u"keychain.keys” still holds the key that your data was encrypted with."_s));
    EXPECT_TRUE(report.value(1).startsWith(u"The next start tries again"_s));
    EXPECT_TRUE(report.contains(u"This computer refused to remove “%1”."_s.arg(store)));
    EXPECT_TRUE(report.contains(u"This computer refused to remove “%1”."_s.arg(settingsPath())));
    EXPECT_TRUE(QFileInfo::exists(store));
    EXPECT_EQ(filesWith(Erasure::underwayKey.data()), QStringList(settingsPath())) << "for the next start";
    QFile::remove(keyFile);

    report = told(QString(), 0, true);
    EXPECT_TRUE(report.value(0).endsWith(u"did not let go of the key that your data was encrypted with."_s));
    EXPECT_FALSE(QFileInfo::exists(store) || Erasure::isUnderway(commandLine.folders()));
}

TEST(ProcessPrivacyTest, LeavesNoCoreLetsNobodyIntoItsMemoryAndWritesNoConnectionKeys)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // other threads are at work
    const auto isKept = [] {
        qputenv("SSLKEYLOGFILE", "keys");
        ProcessPrivacy::keep();
        rlimit core{1, 1};
        ::getrlimit(RLIMIT_CORE, &core);
        return core.rlim_max == 0 && ::prctl(PR_GET_DUMPABLE) == 0 &&
               !qEnvironmentVariableIsSet("SSLKEYLOGFILE");
    };
    EXPECT_EXIT(std::exit(isKept() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(CommandLineTest, SaysWhatTheProgramWasStartedWith)
{
    const auto line =
        CommandLine::parse({u"morvane"_s, u"--reset-onboarding"_s, u"--profile"_s, u"here"_s,
                            u"--practice-server"_s, u"http://a"_s, u"a b.txt"_s, u"file:///c%20d.pdf"_s});
    EXPECT_EQ(line.request,
              (AppRequest{.files = {QFileInfo(u"a b.txt"_s).absoluteFilePath(), u"/c d.pdf"_s}}));
    using Chat = AppRequest::Chat;
    const std::pair<QStringList, AppRequest> requests[] = {
        {{}, {}},
        {{u"--background"_s}, {.showsWindow = false}},
        {{u"--background"_s, u"--new-chat"_s}, {.chat = Chat::fresh}},
        {{u"--ask"_s, u"why?"_s}, {.chat = Chat::fresh, .words = u"why?"_s, .sends = true}},
        {{u"--ask= "_s}, {.words = u" "_s}},
        {{u"--new-ghost-chat"_s, u"--ask=why?"_s}, {.chat = Chat::ghost, .words = u"why?"_s, .sends = true}}};
    for (const auto &[arguments, request] : requests)
        EXPECT_EQ(CommandLine::parse(QStringList{u"m"_s} + arguments).request, request)
            << arguments.join(u' ').toStdString();
    EXPECT_TRUE(line.resetOnboarding);
    EXPECT_EQ(line.practiceServer, u"http://a"_s);
    EXPECT_EQ(line.folders().data, QFileInfo(u"here/data"_s).absoluteFilePath());
    EXPECT_EQ(CommandLine::parse({u"morvane"_s}).folders().data, SupportFolders::standard().data);
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // other threads are at work
    EXPECT_EXIT(static_cast<void>(CommandLine::parse({u"m"_s, u"--practice-server"_s, u"http://a"_s})),
                testing::ExitedWithCode(2), "needs --profile");
    for (const QString &option : {u"--dev-relay=127.0.0.1:1"_s, u"--dev-runtime=/dev/null"_s})
        EXPECT_EXIT(static_cast<void>(CommandLine::parse({u"m"_s, u"--profile"_s, u"here"_s, option})),
                    testing::ExitedWithCode(1), "[Uu]nknown");
}

} // namespace

} // namespace morvane
