#include "app/Launch.h"
#include "end_to_end/KilledAtCall.h"
#include "persistence/ChatStoreLocation.h"
#include "persistence/Database.h"
#include "support/Await.h"
#include "support/WindowDriver.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int cases = 4; // to run beside each other

// The whole program, killed at a rename or a sync of its first start. Each case takes every fourth.
class KilledStartTest : public testing::TestWithParam<int> {
protected:
    KilledStartTest() { commandLine.profile = profile->path(); }

    void TearDown() override { TestWait::settle(); } // what was under way comes to its end

    // False when its window came up before the call.
    bool isKilledAt(int call)
    {
        QProcess program;
        program.setProcessEnvironment(killedAtCall(call, profile->path()));
        program.start(QStringLiteral(MORVANE_PROGRAM),
                      {u"--profile"_s, profile->path(), u"--practice-server"_s, u"http://localhost:1/v1"_s,
                       u"--play-demo"_s, profile->filePath(u"demo.png"_s)});
        const bool cameUp = program.waitForReadyRead(60'000); // it says what it asks
        if (cameUp)
            expectNoCore(program.processId());
        if (cameUp)
            ::kill(static_cast<pid_t>(program.processId()), SIGKILL);
        program.waitForFinished();
        EXPECT_EQ(program.state(), QProcess::NotRunning);
        EXPECT_EQ(program.exitStatus(), QProcess::CrashExit) << program.readAllStandardError().toStdString();
        return !cameUp;
    }

    static void expectNoCore(qint64 process)
    {
        QFile limits(u"/proc/%1/limits"_s.arg(process));
        EXPECT_TRUE(limits.open(QIODevice::ReadOnly));
        EXPECT_TRUE(QRegularExpression(u"Max core file size +0 +0 "_s)
                        .match(QString::fromLatin1(limits.readAll()))
                        .hasMatch());
    }

    static QVariant shown(QQuickWindow *window, const char *property)
    {
        return window->property("shell").value<QObject *>()->property(property);
    }

    void expectCleanStart()
    {
        Launch launch(*qGuiApp, commandLine);
        launch.start();
        QQuickWindow *window = nullptr;
        ASSERT_TRUE(WindowDriver::eventually([&] {
            for (QWindow *each : QGuiApplication::topLevelWindows()) {
                if (each->isVisible() && each->property("shell").isValid())
                    window = qobject_cast<QQuickWindow *>(each);
            }
            return window != nullptr;
        })) << "the person is locked out";
        EXPECT_EQ(shown(window, "startupError"), QString());
        EXPECT_EQ(shown(window, "unsealedNotice"), QString());
        EXPECT_EQ(shown(window, "questionTitle"), QString()) << "taken for one who has been here before";
        const QFileInfo key(SecretKeeping::keyFilePath(commandLine.folders()));
        EXPECT_EQ(key.dir().entryList({key.fileName() + u'*'}), QStringList{key.fileName()});
        auto store =
            Database::open(ChatStoreLocation::storePath(commandLine.folders()), Database::Access::ReadOnly);
        EXPECT_EQ(store.integer("SELECT count(*) FROM Conversation"), 1);
        EXPECT_EQ(store.integer("SELECT count(*) FROM Conversation WHERE sealedTitle LIKE '_KVT1:%'"), 1);
    }

    std::optional<QTemporaryDir> profile{std::in_place};
    CommandLine commandLine;
};

TEST_P(KilledStartTest, TheNextStartComesUpClean)
{
    int call = GetParam();
    for (; isKilledAt(call) && !HasFailure(); call += cases) {
        SCOPED_TRACE(call);
        expectCleanStart();
        profile.emplace();
        commandLine.profile = profile->path();
    }
    EXPECT_GT(call, 3 * cases) << "the calls were not seen";
}

INSTANTIATE_TEST_SUITE_P(EveryRenameAndSync, KilledStartTest, testing::Range(1, 1 + cases));

} // namespace

} // namespace morvane
