// Each provider through the real HTTP client against the real model server: what good, broken and hostile
// servers make of a reply, of the memory and of a stop.

#include "ai/Dialects.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "support/ModelServer.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = ProviderError::Plain;

namespace {

class ProviderContractTest : public testing::TestWithParam<Dialect> {
protected:
    AsyncStream<AIStreamEvent> ask(const char *model,
                                   std::vector<AIMessage> messages = {{AIMessage::Role::user, u"hi"_s}},
                                   std::vector<AITool> tools = {})
    {
        configuration.model = QString::fromLatin1(model);
        return provider->streamReply(std::move(messages), configuration, std::move(tools));
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
    const std::vector<AIMessage> hi{{AIMessage::Role::user, u"hi"_s}};
    const QString arguments = u"{\"text\":\"practice é\"}"_s;
    const std::vector<AIToolCall> two{{u"call_0"_s, u"look"_s, arguments},
                                      {u"call_1"_s, u"look"_s, arguments}};
    EXPECT_EQ(readReply(ask("tool-calls-two", hi, tools)).events,
              std::vector<AIStreamEvent>{AIStream::ToolCalls{two}});
    const auto apart = readReply(ask("tool-calls-same-index", hi, tools));
    EXPECT_EQ(std::get<AIStream::ToolCalls>(apart.events.at(0)).calls.size(), GetParam().isOllama ? 1U : 2U);
    const std::vector<AIMessage> result{{AIMessage::Role::tool, u"a cat"_s, {}, u"call_0"_s, u"look"_s, {}}};
    EXPECT_EQ(readReply(ask("tool-calls-two", result, tools)).text(),
              u"The practice server got this from the tool: “a cat”."_s);
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
    TestData::expect(table, outcome);
}

using ChatSpellingTest = ProviderContractTest;
INSTANTIATE_TEST_SUITE_P(Chat, ChatSpellingTest, testing::Values(chatCompletions), dialectName);

// Each is refused once in the words of a real service, and asked as it likes from then on.
TEST_P(ChatSpellingTest, AStrictServiceIsAskedOnceMoreAndThenAsItLikes)
{
    using Role = AIMessage::Role;
    configuration.purpose = u"chat"_s;
    const auto requestsFor = [this](const char *model) {
        const auto before = server.requests().size();
        const auto error = readReply(ask(model, {{Role::system, u"Be kind."_s},
                                                 {Role::assistant, u"Hello."_s},
                                                 {Role::user, u"hi"_s},
                                                 {Role::system, u"Be brief."_s}}))
                               .error;
        return std::pair(error, server.requests().size() - before);
    };
    for (const char *model : {"strict-purpose", "strict-purpose-schema", "strict-tokens",
                              "strict-temperature", "strict-system", "strict-turns"}) {
        for (const std::size_t requests : {2U, 1U})
            EXPECT_EQ(requestsFor(model), std::pair(std::optional<ProviderError>(), requests)) << model;
    }
    EXPECT_EQ(requestsFor("context-full").second, 1U) << "there is no other spelling of a full context";
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
        const auto outcome = TestWait::begin(readUntilStopped(ask(model), events, stop.get_token()));
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

} // namespace

} // namespace morvane
