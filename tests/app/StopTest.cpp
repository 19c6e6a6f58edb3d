#include "app/AppState.h"

#include "ai/agent/AgentFixture.h"
#include "ai/routing/AIRequestRouter.h"
#include "async/Work.h"
#include "memory/MemoryStore.h"
#include "models/Conversation.h"
#include "persistence/ConversationRepository.h"
#include "security/InMemoryKeychainService.h"
#include "support/Await.h"
#include "support/ManualClock.h"
#include "view_models/chat/ChatViewModel.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// The first of three calls waits for the person, who goes. The others need no yes, or would ask for one.
TEST(StopTest, NothingFollowsAStopThatComesWhileAnApprovalWaits)
{
    using Go = std::function<void(AppState &, const QString &before)>;
    const std::pair<const char *, Go> ways[] = {
        {"stops", [](AppState &state, const QString &) { state.presentation().chat->stopResponding(); }},
        {"says no and stops at once",
         [](AppState &state, const QString &) {
             state.presentation().chat->decline();
             state.presentation().chat->stopResponding();
         }},
        {"begins another chat",
         [](AppState &state, const QString &) { state.presentation().chat->newConversation(); }},
        {"opens another chat",
         [](AppState &state, const QString &id) { state.presentation().chat->open(id); }},
        {"deletes the chat",
         [](AppState &state, const QString &) {
             ChatViewModel &chat = *state.presentation().chat;
             chat.remove(chat.conversationId());
         }},
        {"quits", [](AppState &state, const QString &) { state.willTerminate(); }},
    };
    for (const auto &[what, go] : ways) {
        SCOPED_TRACE(what);
        QTemporaryDir profile;
        CommandLine commandLine;
        commandLine.profile = profile.path();
        commandLine.practiceServer = u"http://127.0.0.1:9/v1"_s; // answers searches, if one went out
        ManualClock clock;
        InMemoryKeychainService keychain;
        Work work(clock);
        AppState state(commandLine, Host::test, clock, Secrets{keychain, keychain}, work);
        const auto model = std::make_shared<ScriptedModel>(std::vector<ScriptedModel::Round>{
            {{AIStream::ToolCalls{{{u"1"_s, u"search_web"_s, uR"({"query":"ferns"})"_s},
                                   {u"2"_s, u"remember"_s, uR"({"fact":"They left."})"_s},
                                   {u"3"_s, u"search_web"_s, uR"({"query":"mosses"})"_s}}}}}});
        state.assistant().router->injectProvider(model);
        ChatViewModel &chat = *state.presentation().chat;
        chat.sendMessage(u"first"_s, std::nullopt);
        chat.stopResponding();
        TestWait::settle();
        const QString before = chat.conversationId();
        chat.newConversation();
        int broughtUp = 0;
        QObject::connect(&state, &AppState::mainWindowRequested, [&broughtUp] { ++broughtUp; });
        chat.sendMessage(u"second"_s, std::nullopt);
        TestWait::settle();
        ASSERT_TRUE(chat.hasApproval());
        EXPECT_EQ(broughtUp, 1) << "the window comes to the front";
        const auto reply = chat.messages()->messages().back();

        go(state, before);
        TestWait::settle();
        EXPECT_EQ(reply->status(), MessageStatus::cancelled);
        EXPECT_FALSE(chat.hasApproval());
        EXPECT_EQ(broughtUp, 1);
        EXPECT_TRUE(state.assistant().memory->facts().empty());
        EXPECT_EQ(reply->toolSummary(), u"Searching the web…"_s);
    }
}

} // namespace

} // namespace morvane
