// Each provider through the real HTTP client against the real model server: what good, broken and hostile
// servers make of a reply, of the memory and of a stop.

#include "ai/Dialects.h"
#include "ai/providers/ServerModels.h"
#include "async/Work.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "support/ModelServer.h"
#include "support/ProcessMemory.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = ProviderError::Plain;

namespace {

class ProviderContractTest : public testing::TestWithParam<Dialect> {
protected:
    AsyncStream<AIStreamEvent> ask(const char *model, AIMessage message = {AIMessage::Role::user, u"hi"_s},
                                   std::vector<AITool> tools = {})
    {
        configuration.model = QString::fromLatin1(model);
        return provider->streamReply({std::move(message)}, configuration, std::move(tools));
    }
    Reply replyOf(const char *model) { return readReply(ask(model)); }

    // Chats that the server was asked for; Ollama is asked about the model before.
    std::vector<ModelServer::Request> chats()
    {
        std::vector<ModelServer::Request> asked = server.requests();
        std::erase_if(asked, [](const auto &request) { return request.target == "/api/show"; });
        return asked;
    }

    // Lets what was stopped or is still on its way come to its end.
    void TearDown() override
    {
        TestWait::settle();
        server.awaitEnded(server.requests().size());
        TestWait::settle();
    }

    ModelServer server{ModelServer::Interface::ollama}; // speaks both
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    Work work{clock};
    std::unique_ptr<AIProvider> provider = GetParam().provider(network);
    AIConfiguration configuration = [this] {
        AIConfiguration c;
        c.baseURLString = server.baseUrl();
        c.maxOutputTokens = 100;
        return c;
    }();
};

INSTANTIATE_TEST_SUITE_P(Both, ProviderContractTest, testing::Values(chatCompletions, ollama), dialectName);

TEST_P(ProviderContractTest, EveryHonestShapeOfAReplyBecomesTheSameText)
{
    for (const char *model :
         {"practice-fast", "keep-alive-comments", "crlf", "usage-chunks", "json-despite-stream",
          "thinking-fields", "redirect-other", "no-last-line-end", "garbage-lines", "images-refused",
          GetParam().isOllama ? "practice-fast" : "no-done",
          GetParam().isOllama ? "practice-fast" : "empty-choices"}) {
        const Reply reply = replyOf(model);
        EXPECT_TRUE(reply.text().contains(u"You wrote: “hi”."_s)) << model << reply.text().toStdString();
        EXPECT_EQ(reply.error, std::nullopt) << model;
    }
    // Each request ends as a complete one, also where the end of the reply came before that of the body.
    const std::size_t sent = server.requests().size();
    TestWait::until([&] { return ledger.snapshot().entries.size() == sent; });
    for (const NetworkLedger::Entry &row : ledger.snapshot().entries)
        EXPECT_TRUE(std::holds_alternative<EgressOutcome::Completed>(row.outcome.value))
            << row.outcome.text().toStdString();

    EXPECT_EQ(replyOf("drip").text(), u"Drop by drop, é and 👻 too, from the practice server."_s);
    EXPECT_EQ(replyOf("pieces-2000").events.size(), 2000U);
    EXPECT_EQ(replyOf("length").events.back(), AIStreamEvent(AIStream::TruncatedByTokenLimit{}));
    EXPECT_EQ(std::holds_alternative<AIStream::Thinking>(replyOf("thinking-fields").events.front()),
              GetParam().isOllama); // the other dialect has no such field
}

TEST_P(ProviderContractTest, CallsComeWholeAndTheirResultsGoBack)
{
    const std::vector<AITool> tools{{u"look"_s}};
    const AIMessage hi{AIMessage::Role::user, u"hi"_s};
    const QString arguments = u"{\"text\":\"practice é\"}"_s;
    const std::vector<AIToolCall> two{{u"call_0"_s, u"look"_s, arguments},
                                      {u"call_1"_s, u"look"_s, arguments}};
    EXPECT_EQ(readReply(ask("tool-calls-two", hi, tools)).events,
              std::vector<AIStreamEvent>{AIStream::ToolCalls{two}});
    for (const char *model : {"tool-call-whole", "tool-call-split"}) {
        const Reply reply = readReply(ask(model, hi, tools));
        ASSERT_EQ(reply.events.size(), 1U) << model;
        const auto calls = std::get<AIStream::ToolCalls>(reply.events[0]).calls;
        ASSERT_EQ(calls.size(), 1U) << model;
        EXPECT_EQ(calls[0].name + calls[0].argumentsJSON, u"look"_s + arguments) << model;
    }
    const auto apart = readReply(ask("tool-calls-same-index", hi, tools));
    EXPECT_EQ(std::get<AIStream::ToolCalls>(apart.events.at(0)).calls.size(), GetParam().isOllama ? 1U : 2U);
    const AIMessage result{AIMessage::Role::tool, u"a cat"_s, {}, u"call_0"_s, u"look"_s, {}};
    EXPECT_EQ(readReply(ask("tool-calls-two", result, tools)).text(),
              u"The practice server got this from the tool: “a cat”."_s);
    const auto rejected = readReply(ask("reject-tools", hi, tools)).error;
    EXPECT_TRUE(rejected && rejected->isToolRejection());
}

TEST_P(ProviderContractTest, EveryBrokenServerEndsInItsError)
{
    const auto outcome = [this](const QByteArray &model) {
        const Reply reply = replyOf(model);
        const QString words = reply.error ? reply.error->quotedWords() : QString();
        return reply.text() + u" | "_s + (reply.error ? reply.error->userMessage() : u"no error"_s) +
               (words.isEmpty() ? QString() : u" | "_s + words);
    };
    const char *table = GetParam().isOllama ? "ai/ollama_broken_servers.txt" : "ai/chat_broken_servers.txt";
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

// Each is refused once in the words of a real service, and asked as it likes from then on.
TEST(ChatSpellingTest, AStrictServiceIsAskedOnceMoreAndThenAsItLikes)
{
    ModelServer server;
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    OpenAICompatibleProvider provider{network};
    using Role = AIMessage::Role;
    const std::vector<AIMessage> chat{{Role::system, u"Be kind."_s},
                                      {Role::assistant, u"Hello."_s},
                                      {Role::user, u"hi"_s},
                                      {Role::system, u"Be brief."_s}};
    const auto ask = [&](const char *model) {
        AIConfiguration configuration;
        configuration.baseURLString = server.baseUrl();
        configuration.model = QString::fromLatin1(model);
        configuration.purpose = u"chat"_s;
        const auto before = server.requests().size();
        const Reply reply = readReply(provider.streamReply(chat, configuration, {}));
        return std::pair(reply.error, server.requests().size() - before);
    };
    for (const char *model : {"strict-purpose", "strict-purpose-schema", "strict-tokens",
                              "strict-temperature", "strict-system", "strict-turns"}) {
        EXPECT_EQ(ask(model), (std::pair<std::optional<ProviderError>, std::size_t>(std::nullopt, 2)))
            << model;
        EXPECT_EQ(ask(model), (std::pair<std::optional<ProviderError>, std::size_t>(std::nullopt, 1)))
            << model;
    }
    EXPECT_EQ(ask("context-full").second, 1U) << "there is no other spelling of a full context";
    EXPECT_EQ(ask("status-400").second, 1U);
    EXPECT_EQ(ledger.snapshot().entries.size(), server.requests().size()) << "a row for each";
}

TEST_P(ProviderContractTest, AKeyGoesToItsOwnServerOnly)
{
    configuration.apiKey = u"secret"_s;
    replyOf("redirect-other");
    const auto asked = chats();
    ASSERT_EQ(asked.size(), 2U);
    EXPECT_EQ(asked[0].headers["Authorization"_L1].toString(), u"Bearer secret"_s);
    EXPECT_TRUE(asked[1].target.startsWith("/elsewhere/"));
    EXPECT_FALSE(asked[1].headers.contains("Authorization"_L1));
    EXPECT_EQ(asked[1].json(), asked[0].json());
}

TEST_P(ProviderContractTest, SilenceEndsInATimeout)
{
    for (const char *model : {"stall-before-headers", "stall-mid-stream"}) {
        const std::size_t before = server.requests().size();
        const auto reply = std::make_shared<TestWait::Outcome<Reply>>();
        TestWait::collect(readTask<Reply>(ask(model)), reply);
        server.awaitRequests(before + (GetParam().isOllama ? 2 : 1));
        while (!reply->done) {
            TestWait::settle();
            clock.advance(121s);
        }
        EXPECT_EQ(reply->value->error, ProviderError(Plain::networkTimeout)) << model;
        server.awaitEnded(server.requests().size());
        EXPECT_TRUE(server.requests().back().clientLeft);
    }
}

QCoro::Task<> readUntilStopped(AsyncStream<AIStreamEvent> stream, std::shared_ptr<int> events,
                               std::stop_token stop)
{
    while (const auto event = co_await stream.next(stop))
        ++*events;
}

// No server here ends its reply by itself, and no time passes: only the stop can end the reader.
TEST_P(ProviderContractTest, AStopEndsTheReaderAtEachStageAndReachesTheServer)
{
    const auto stopWhen = [this](const char *model, const std::function<bool(int)> &reached) {
        std::stop_source stop;
        const auto events = std::make_shared<int>(0);
        const auto outcome = std::make_shared<TestWait::Outcome<void>>();
        TestWait::collect(readUntilStopped(ask(model), events, stop.get_token()), outcome);
        TestWait::until([&] { return reached(*events); });
        stop.request_stop();
        TestWait::until([&] { return outcome->done; });
        return *events;
    };
    stopWhen("stall-before-headers", [this](int) { return chats().size() == 1; });
    stopWhen("stall-mid-stream", [](int events) { return events == 4; });
    server.awaitEnded(server.requests().size());
    for (const ModelServer::Request &chat : chats())
        EXPECT_TRUE(chat.clientLeft);
    EXPECT_LT(stopWhen("pieces-100000", [](int events) { return events > 10; }), 100'000);
}

// The list is read the same way whatever the interface.
TEST_P(ProviderContractTest, ListsItsModelsForItsKeyAtAnAddressThatMayBeUsed)
{
    configuration.apiKey = u"secret"_s;
    EXPECT_TRUE(
        TestWait::await(ServerModels::list(&network, &work, configuration, {})).contains(u"practice"_s));
    EXPECT_EQ(server.requests().back().headers["Authorization"_L1].toString(), u"Bearer secret"_s);
    configuration.baseURLString = u"http://example.org/v1"_s; // not encrypted, not near
    EXPECT_THROW(TestWait::await(ServerModels::list(&network, &work, configuration, {})), ProviderError);
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_P(ProviderContractTest, HugeAnswersCostLittleMemory)
{
    if (ProcessMemory::isInstrumented())
        GTEST_SKIP() << "the sanitizer keeps freed memory";
    EXPECT_LT(ProcessMemory::peakMebibytes([&] { replyOf("huge-error-body"); }), 50);
    EXPECT_LT(ProcessMemory::peakMebibytes([&] { replyOf("huge-line"); }), 50);
    configuration.preferStreaming = false; // to the other dialect it means nothing
    const char *model = GetParam().isOllama ? "huge-line" : "huge-body";
    EXPECT_LT(ProcessMemory::peakMebibytes(
                  [&] { EXPECT_EQ(replyOf(model).error, ProviderError(Plain::replyTooLarge)); }),
              50);
}

} // namespace

} // namespace morvane
