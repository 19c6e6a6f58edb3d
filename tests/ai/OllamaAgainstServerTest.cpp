// The native provider through the real HTTP client against the real model server.

#include "ai/ReplyReading.h"
#include "ai/providers/OllamaNativeProvider.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "support/ModelServer.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

namespace {

const QString elsewhere = u"https://elsewhere.invalid:443"_s;

class OllamaAgainstServerTest : public testing::Test {
protected:
    AsyncStream<AIStreamEvent> ask(const QString &model, AIMessage message = {AIMessage::Role::user, u"hi"_s},
                                   std::vector<AITool> tools = {})
    {
        configuration.model = model;
        return provider.streamReply({std::move(message)}, configuration, std::move(tools));
    }
    Reply replyOf(const char *model) { return readReply(ask(QString::fromLatin1(model))); }

    void TearDown() override
    {
        TestWait::settle();
        server.awaitEnded(server.requests().size());
        TestWait::settle();
    }

    ModelServer server{ModelServer::Interface::ollama};
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork network{ledger, clock};
    OllamaNativeProvider provider{network, clock};
    AIConfiguration configuration = [this] {
        AIConfiguration c;
        c.baseURLString = server.baseUrl();
        c.maxOutputTokens = 100;
        return c;
    }();
};

TEST_F(OllamaAgainstServerTest, EveryHonestShapeOfAReplyBecomesTheSameText)
{
    for (const char *model :
         {"practice-fast", "keep-alive-comments", "crlf", "no-done", "no-last-line-end", "garbage-lines",
          "json-despite-stream", "thinking-fields", "images-refused", "redirect-other"}) {
        const Reply reply = replyOf(model);
        EXPECT_TRUE(reply.text().contains(u"You wrote: “hi”."_s)) << model << reply.text().toStdString();
        EXPECT_EQ(reply.error, std::nullopt) << model;
    }
    const std::size_t sent = server.requests().size();
    TestWait::until([&] { return ledger.snapshot().entries.size() == sent; });
    for (const NetworkLedger::Entry &row : ledger.snapshot().entries)
        EXPECT_TRUE(std::holds_alternative<EgressOutcome::Completed>(row.outcome.value))
            << row.outcome.text().toStdString();

    EXPECT_TRUE(std::holds_alternative<AIStream::Thinking>(replyOf("thinking-fields").events.front()));
    EXPECT_EQ(replyOf("drip").text(), u"Drop by drop, é and 👻 too, from the practice server."_s);
    EXPECT_TRUE(std::holds_alternative<AIStream::TruncatedByTokenLimit>(replyOf("length").events.back()));
}

TEST_F(OllamaAgainstServerTest, CallsComeWholeAndTheirResultsGoBack)
{
    const std::vector<AITool> tools{{u"look"_s}};
    const AIMessage hi{AIMessage::Role::user, u"hi"_s};
    const QString arguments = u"{\"text\":\"practice é\"}"_s;
    const std::vector<AIToolCall> two{{u"call_0"_s, u"look"_s, arguments},
                                      {u"call_1"_s, u"look"_s, arguments}};
    EXPECT_EQ(readReply(ask(u"tool-calls-two"_s, hi, tools)).events,
              std::vector<AIStreamEvent>{AIStream::ToolCalls{two}});
    const AIMessage result{AIMessage::Role::tool, u"a cat"_s, {}, u"call_0"_s, u"look"_s, {}};
    EXPECT_EQ(readReply(ask(u"tool-calls-two"_s, result, tools)).text(),
              u"The practice server got this from the tool: “a cat”."_s);
    EXPECT_EQ(replyOf("tool-call-nameless").error, ProviderError(Plain::emptyResponse));
    const auto rejected = readReply(ask(u"reject-tools"_s, hi, tools)).error;
    EXPECT_TRUE(rejected && rejected->isToolRejection());
    const AIMessage picture{AIMessage::Role::user, {}, {}, {}, {}, {u"data:image/png;base64,AAAA"_s}};
    EXPECT_EQ(readReply(ask(u"images-refused"_s, picture)).error, ProviderError(Plain::modelLacksVision));
}

TEST_F(OllamaAgainstServerTest, EveryBrokenServerEndsInItsError)
{
    const QString begun = u"The practice server begins, "_s;
    const std::vector<std::tuple<const char *, QString, ProviderError::Case>> cases{
        {"cut-mid-character", begun, Plain::networkUnavailable},
        {"cut-mid-json", begun, Plain::networkUnavailable},
        {"cut-between-events", begun, Plain::networkUnavailable},
        {"error-mid-stream", begun, ProviderError::ModelError{u"The practice server failed midway."_s}},
        {"error-object-in-200", {}, ProviderError::ModelError{u"The practice server failed midway."_s}},
        {"garbage", {}, Plain::emptyResponse},
        {"empty", {}, Plain::emptyResponse},
        {"done-only", {}, Plain::emptyResponse},
        {"huge-line", begun, Plain::malformedResponse},
        {"not-http", {}, Plain::networkUnavailable},
        {"redirect-loop", {}, Plain::networkUnavailable},
        {"status-401", {}, Plain::authenticationFailed},
        {"huge-error-body", {}, ProviderError::ServerError{500}},
        {"no-such-model", {}, ProviderError::ServerError{404}},
    };
    for (const auto &[model, text, error] : cases) {
        const Reply reply = replyOf(model);
        EXPECT_EQ(reply.text(), text) << model;
        EXPECT_EQ(reply.error, ProviderError(error)) << model;
    }
}

TEST_F(OllamaAgainstServerTest, AStopReachesTheServer)
{
    auto stream = std::make_optional(ask(u"stall-mid-stream"_s));
    TestWait::until([&] { return stream->takeBuffered().has_value(); });
    stream.reset();
    server.awaitEnded(2);
    EXPECT_TRUE(server.requests()[1].clientLeft);
}

TEST_F(OllamaAgainstServerTest, TheProbesTellWhatIsListed)
{
    ModelServer shelf(ModelServer::Interface::ollama,
                      {{u"small:1b"_s, {u"completion"_s, u"tools"_s}},
                       {u"big:cloud"_s, {u"completion"_s, u"vision"_s}, elsewhere}});
    const QString base = shelf.baseUrl();
    EXPECT_EQ(TestWait::await(provider.modelList(base, {})),
              (std::vector<OllamaModel>{{u"small:1b"_s, false}, {u"big:cloud"_s, true}}));
    EXPECT_EQ(TestWait::await(provider.capabilities(base, u"big:cloud"_s, {})),
              (QStringList{u"completion"_s, u"vision"_s}));
    EXPECT_EQ(TestWait::await(provider.capabilities(base, u"other"_s, {})), std::nullopt);
    EXPECT_EQ(TestWait::await(provider.version(shelf.rootUrl(), {})), u"0.34.0"_s);
    configuration.baseURLString = base;
    EXPECT_EQ(TestWait::await(provider.testConnection(configuration, {})), QString());
    EXPECT_EQ(replyOf("small:1b").error, std::nullopt);

    const ModelServer other(ModelServer::Interface::chatCompletions);
    EXPECT_EQ(TestWait::await(provider.version(other.baseUrl(), {})), std::nullopt);
    EXPECT_EQ(TestWait::await(provider.modelList(other.baseUrl(), {})), std::nullopt);
}

} // namespace

} // namespace morvane
