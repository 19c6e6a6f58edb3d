#include "app/Launch.h"

#include "persistence/ChatStoreLocation.h"
#include "platform/linux/ProcessPrivacy.h"
#include "support/Await.h"
#include "support/WindowDriver.h"
#include "utils/files/PrivateFile.h"

#include <QFileInfo>
#include <QGuiApplication>
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
    static QVariant valueOf(QQuickWindow *window, const char *object, const char *property)
    {
        return window->property(object).value<QObject *>()->property(property);
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
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    QQuickWindow *window = windowWith("shell");
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->title(), u"MorvaneGPT"_s);
    EXPECT_TRUE(hasKeyFile());
    EXPECT_TRUE(valueOf(window, "shell", "keychainNotice").toString().contains(u"is kept in a file"_s));
    EXPECT_EQ(valueOf(window, "settings", "baseURLString"), u"http://localhost:1/v1"_s);
    EXPECT_EQ(valueOf(window, "settings", "model"), u"practice"_s);
    EXPECT_EQ(valueOf(window, "settings", "hostedChatEnabled"), false);

    window->close();
    TestWait::settle();
    EXPECT_TRUE(window->windowStates() & Qt::WindowMinimized) << "put away and not lost";
    launch.show();
    EXPECT_FALSE(window->windowStates() & Qt::WindowMinimized);
}

TEST_F(LaunchTest, ChatsWithoutTheirKeyStayClosedAndThePersonMayTryAgain)
{
    const QString store = ChatStoreLocation::storePath(commandLine.folders());
    PrivateFile::write(store, "sealed with a key that is gone");
    Launch launch(*qGuiApp, commandLine);
    launch.start();
    QQuickWindow *waiting = windowWith("startup");
    ASSERT_NE(waiting, nullptr);
    EXPECT_TRUE(valueOf(waiting, "startup", "canRetry").toBool());
    EXPECT_FALSE(valueOf(waiting, "startup", "sentence").toString().isEmpty());
    EXPECT_FALSE(hasKeyFile()) << "no new key takes its place";
    QFile::remove(store);
    QMetaObject::invokeMethod(waiting->property("startup").value<QObject *>(), "retry");
    EXPECT_NE(windowWith("shell"), nullptr);
}

TEST(ProcessPrivacyTest, LeavesNoCoreLetsNobodyIntoItsMemoryAndWritesNoConnectionKeys)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // other threads are at work
    const auto isKept = [] {
        qputenv("SSLKEYLOGFILE", "keys");
        ProcessPrivacy::keep();
        rlimit core{1, 1};
        ::getrlimit(RLIMIT_CORE, &core);
        return core.rlim_max == 0 && ::prctl(PR_GET_DUMPABLE) == 0 && !qEnvironmentVariableIsSet("SSLKEYLOGFILE");
    };
    EXPECT_EXIT(std::exit(isKept() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(CommandLineTest, SaysWhatTheProgramWasStartedWith)
{
    const auto line = CommandLine::parse({u"morvane"_s, u"--reset-onboarding"_s, u"--profile"_s, u"here"_s,
                                          u"--practice-server"_s, u"http://a"_s});
    EXPECT_TRUE(line.resetOnboarding);
    EXPECT_EQ(line.practiceServer, u"http://a"_s);
    EXPECT_EQ(line.folders().data, QFileInfo(u"here/data"_s).absoluteFilePath());
    EXPECT_EQ(CommandLine::parse({u"morvane"_s}).folders().data, SupportFolders::standard().data);
    testing::FLAGS_gtest_death_test_style = "threadsafe"; // other threads are at work
    EXPECT_EXIT(static_cast<void>(CommandLine::parse({u"m"_s, u"--practice-server"_s, u"http://a"_s})),
                testing::ExitedWithCode(2), "needs --profile");
}

} // namespace

} // namespace morvane
