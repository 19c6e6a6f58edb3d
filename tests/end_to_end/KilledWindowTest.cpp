#include "app/AppState.h"
#include "app/SecretKeeping.h"
#include "async/Clock.h"
#include "support/Await.h"
#include "support/ModelServer.h"
#include "view_models/chat/ChatViewModel.h"
#include "view_models/sidebar/ConversationListModel.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <random>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The whole program, killed while its window asks a server and a reply streams in.
class KilledWindowTest : public testing::TestWithParam<unsigned> {
protected:
    // Starts the program, lets so many pieces of its reply reach its output, and kills it.
    void runAndKill(int pieces)
    {
        QProcess program;
        program.start(QStringLiteral(MORVANE_PROGRAM),
                      {u"--practice-server"_s, server.baseUrl(), u"--profile"_s, profile.path(),
                       u"--play-demo"_s, profile.filePath(u"demo.png"_s)});
        for (int i = 0; i < pieces; ++i)
            ASSERT_TRUE(program.waitForReadyRead(20'000)) << program.readAllStandardOutput().toStdString()
                                                          << program.readAllStandardError().toStdString();
        ::kill(static_cast<pid_t>(program.processId()), SIGKILL);
        program.waitForFinished();
    }

    // What the next start shows; the number of messages.
    int openAndCount()
    {
        CommandLine commandLine;
        commandLine.profile = profile.path();
        Work work(clock);
        SecretKeeping secrets(commandLine.folders(), std::make_unique<AbsentKeyring>(), work);
        const auto opening = TestWait::await(secrets.preparation().prepare(KeyExpectation::MustExist));
        EXPECT_TRUE(isReady(opening.state));
        AppState state(commandLine, Host::test, clock, {secrets.keychain(), secrets.keychain()}, work);
        EXPECT_FALSE(state.storage().startupError);
        const auto &chats = *state.presentation().conversations;
        int messages = 0;
        for (int i = 0; i < chats.rowCount(); ++i) {
            state.presentation().chat->open(
                chats.index(i).data(ConversationListModel::ConversationIdRole).toString());
            messages += expectWholeMessages(*state.presentation().chat->messages());
        }
        state.willTerminate();
        return messages;
    }

    static int expectWholeMessages(const MessageListModel &messages)
    {
        for (int i = 0; i < messages.rowCount(); ++i) {
            const QModelIndex row = messages.index(i);
            EXPECT_FALSE(row.data(MessageListModel::RunningRole).toBool()) << "drawn as running";
            if (row.data(MessageListModel::IsUserRole).toBool()) {
                EXPECT_FALSE(row.data(MessageListModel::TextRole).toString().isEmpty());
            }
        }
        return messages.rowCount();
    }

    QTemporaryDir profile;
    SystemClock clock;
    ModelServer server;
    std::mt19937 random{GetParam()};
};

TEST_P(KilledWindowTest, TheNextStartHasEverythingThatWasThere)
{
    int before = 0;
    for (int round = 0; round < 10; ++round) {
        runAndKill(static_cast<int>(1 + random() % 6));
        if (HasFatalFailure())
            return;
        const int now = openAndCount();
        EXPECT_GE(now, before) << "a message that had been saved is lost";
        before = now;
    }
    EXPECT_GE(before, 10) << "it was killed before it wrote";
}

INSTANTIATE_TEST_SUITE_P(Seeds, KilledWindowTest, testing::Range(1U, 3U));

} // namespace

} // namespace morvane
