#include "ai/providers/OllamaNativeProvider.h"

#include "ai/ReplyReading.h"
#include "ai/providers/ProviderFailure.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = ProviderError::Plain;

namespace {

const QByteArray noThinking = R"({"capabilities":["completion","tools"]})";
const QByteArray thinking = R"({"capabilities":["completion","thinking"]})";
const QByteArray helloBody =
    "{\"message\":{\"content\":\"hello\"}}\n{\"done\":true,\"done_reason\":\"stop\"}\n";

class OllamaNativeProviderTest : public testing::Test {
protected:
    Reply replyTo(std::vector<AIMessage> messages = {{AIMessage::Role::user, u"hi"_s}},
                  std::vector<AITool> tools = {})
    {
        return readReply(provider.streamReply(std::move(messages), configuration, std::move(tools)));
    }
    // The reply to one answer, from a model whose capabilities are told before.
    Reply replyWith(int status, QByteArray body)
    {
        network.fake->answer(200, noThinking);
        network.fake->answer(status, std::move(body));
        return replyTo();
    }
    QJsonObject sentBody(std::size_t request) const
    {
        return QJsonDocument::fromJson(network.fake->requests().at(request).body).object();
    }

    AIConfiguration configuration = [] {
        AIConfiguration c;
        c.baseURLString = u"http://localhost:11434/v1?key=1"_s;
        c.apiKey = u"key"_s;
        c.model = u" qwen3:8b\t"_s;
        c.temperature = 0.25;
        c.maxOutputTokens = 2048;
        c.requestTimeout = 1.5;
        c.purpose = u"chat"_s;
        c.carrying = SensitiveData::memory;
        return c;
    }();
    FakeHttpSessionProvider network;
    ManualClock clock;
    OllamaNativeProvider provider{network, clock};
    LogCapture log;
};

TEST_F(OllamaNativeProviderTest, SendsOneRequestWithWhatWasConfigured)
{
    AIMessage asked{AIMessage::Role::assistant,
                    u""_s,
                    {{u"a"_s, u"look"_s, u"{\"at\":[1]}"_s}, {u"b"_s, u"look"_s, u"no json"_s}},
                    {},
                    {},
                    {}};
    AIMessage result{AIMessage::Role::tool, u"seen"_s, {}, u"a"_s, u"look"_s, {}};
    AIMessage seen{AIMessage::Role::user,
                   u"what"_s,
                   {},
                   {},
                   {},
                   {u"data:image/png;base64,AA,A="_s, u"BBB="_s, u"data:none"_s}};
    network.fake->answer(200, thinking);
    network.fake->answer(200, helloBody);
    const Reply reply =
        replyTo({{AIMessage::Role::system, u"be"_s}, asked, result, seen}, {{u"look"_s, u"Looks."_s}});
    EXPECT_EQ(reply.text(), u"hello"_s);
    EXPECT_EQ(reply.error, std::nullopt);

    ASSERT_EQ(network.fake->requests().size(), 2U);
    const HttpRequest &show = network.fake->requests()[0];
    EXPECT_EQ(show.method + ' ' + show.url.toEncoded(), "POST http://localhost:11434/api/show");
    EXPECT_EQ(show.timeout, 5s);
    EXPECT_EQ(show.body, R"({"model":"qwen3:8b"})");
    const HttpRequest &chat = network.fake->requests()[1];
    EXPECT_EQ(chat.method + ' ' + chat.url.toEncoded(), "POST http://localhost:11434/api/chat");
    EXPECT_EQ(chat.timeout.count(), 1500);
    ASSERT_EQ(chat.headers.size(), 1U);
    EXPECT_EQ(chat.headers[0].name + ": " + chat.headers[0].value, "Content-Type: application/json");
    EXPECT_FALSE(chat.followsRedirect(chat.url, QUrl(u"http://public.example.com/api/chat"_s)));
    EXPECT_EQ(sentBody(1), QJsonDocument::fromJson(R"({
        "model": "qwen3:8b", "stream": true, "think": true,
        "options": {"num_ctx": 16384, "temperature": 0.25, "num_predict": 2048},
        "messages": [{"role": "system", "content": "be"},
            {"role": "assistant", "content": "", "tool_calls": [
                {"function": {"name": "look", "arguments": {"at": [1]}}}, {"function": {"name": "look", "arguments": {}}}]},
            {"role": "tool", "content": "seen", "tool_name": "look"},
            {"role": "user", "content": "what", "images": ["AA,A=", "BBB=", "data:none"]}],
        "tools": [{"type": "function", "function": {"name": "look", "description": "Looks.",
            "parameters": {"type": "object", "properties": {}, "required": []}}}]})")
                               .object());
    const std::vector<std::pair<EgressFeature, SensitiveDataSet>> asks{
        {EgressFeature::aiModel, SensitiveData::memory}, {EgressFeature::aiModel, {}}};
    EXPECT_EQ(network.asked, asks);
    EXPECT_EQ(log.lines(), (QStringList{u"ai-provider: Starting native Ollama request to model qwen3:8b"_s,
                                        u"ai-provider: Native Ollama request completed"_s}));
}

TEST_F(OllamaNativeProviderTest, AsksForThinkingWhereTheModelThinks)
{
    const QJsonValue none(QJsonValue::Undefined);
    const struct {
        QString model;
        int status;
        QByteArray shown;
        bool thinksLonger;
        QJsonValue expected;
        bool isRemembered;
    } cases[] = {
        {u"GPT-OSS:20b"_s, 200, thinking, false, u"low"_s, true},
        {u"qwen3:4b"_s, 200, thinking, false, true, true},
        {u"llama3.2:3b"_s, 200, noThinking, true, none, true},
        {u"unknown"_s, 404, R"({"error":"model 'unknown' not found"})", false, none, false},
        {u"unknown"_s, 200, R"({"details":{}})", true, true, false},
        {u"unknown"_s, 200, "not json", false, none, false},
    };
    for (const auto &row : cases) {
        configuration.model = row.model;
        configuration.thinksLonger = row.thinksLonger;
        network.fake->answer(row.status, row.shown);
        network.fake->answer(200, helloBody);
        replyTo();
        EXPECT_EQ(sentBody(network.fake->requests().size() - 1).value("think"_L1), row.expected)
            << row.shown.toStdString();
        if (!row.isRemembered)
            continue;
        network.fake->answer(200, helloBody);
        replyTo();
        EXPECT_EQ(sentBody(network.fake->requests().size() - 1).value("think"_L1), row.expected)
            << row.shown.toStdString();
    }
}

TEST_F(OllamaNativeProviderTest, YieldsEventsInTheirOrderAndStopsAtTheLastLine)
{
    const Reply reply = replyWith(200, R"({"message":{"content":"","thinking":"hm"}}
skipped
{"message":{"content":"a"}}
{"message":{"tool_calls":[{"function":{"name":"f","arguments":{"x":1}}}]}}
{"message":{"content":"b","tool_calls":[{"id":"own","function":{"name":"g"}},{"function":{"name":"h"}}]}}
{"message":{"content":"c"},"done":true,"done_reason":"length"}
{"message":{"content":"never"}}
)");
    EXPECT_EQ(reply.error, std::nullopt);
    EXPECT_EQ(reply.events,
              (std::vector<AIStreamEvent>{AIStream::Thinking{}, AIStream::Text{u"a"_s},
                                          AIStream::Text{u"b"_s}, AIStream::Text{u"c"_s},
                                          AIStream::ToolCalls{{{u"call_0"_s, u"f"_s, u"{\"x\":1}"_s},
                                                               {u"own"_s, u"g"_s, u"{}"_s},
                                                               {u"call_2"_s, u"h"_s, u"{}"_s}}},
                                          AIStream::TruncatedByTokenLimit{}}));
}

TEST_F(OllamaNativeProviderTest, EveryFailureEndsInItsError)
{
    const QByteArray call = R"({"function":{"name":"f"}})";
    const QByteArray tooMany = R"({"message":{"tool_calls":[)" + (call + ',').repeated(256) + call + "]}}";
    const struct {
        int status;
        QByteArray body;
        ProviderError::Case expected;
    } cases[] = {
        {400, R"({"error":"This model does not support VISION."})", Plain::modelLacksVision},
        {500, R"({"error":"missing data required for image input"})", Plain::modelLacksVision},
        {400, R"({"error":"does not support tools"})", ProviderError::ServerError{400}},
        {403, R"({"error":{"message":"vision"}})", Plain::authenticationFailed},
        {429, {}, Plain::rateLimited},
        {404, R"({"error":")" + QByteArray(ProviderFailure::errorBodyLimit, 'x') + R"( image"})",
         ProviderError::ServerError{404}},
        {200, "{\"message\":{\"content\":\"\"}}\n{\"error\":\"out of memory\"}\n",
         ProviderError::ModelError{u"out of memory"_s}},
        {200, {}, Plain::emptyResponse},
        {200, R"({"message":{"thinking":"hm"},"done":true})", Plain::emptyResponse},
        {200, tooMany, Plain::malformedResponse},
        {200, QByteArray(2 * 1024 * 1024 + 1, 'x'), Plain::malformedResponse},
    };
    for (const auto &[status, body, expected] : cases) {
        configuration.model += u'x'; // each asks anew
        EXPECT_EQ(replyWith(status, body).error, ProviderError(expected))
            << status << body.first(std::min<qsizetype>(body.size(), 60)).toStdString();
    }
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Native Ollama HTTP 400: <private>"_s));
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Native Ollama stream error: <private>"_s));
}

TEST_F(OllamaNativeProviderTest, RefusesBeforeAnythingIsSent)
{
    configuration.model = u" \t "_s;
    EXPECT_EQ(replyTo().error, ProviderError(Plain::notConfigured));
    configuration.model = u"m"_s;
    configuration.baseURLString = u"http://public.example.com"_s;
    EXPECT_EQ(replyTo().error, ProviderError(ProviderError::InsecureBaseURL{u"http://public.example.com"_s}));
    EXPECT_EQ(TestWait::await(provider.version(configuration.baseURLString, {})), std::nullopt);
    EXPECT_THROW(TestWait::await(provider.testConnection(configuration, {})), ProviderError);
    EXPECT_TRUE(network.fake->requests().empty());
}

TEST_F(OllamaNativeProviderTest, ProbesReadWhatTheServerTellsAndNothingElse)
{
    const QString base = u"https://host.example.com/deep/v1"_s;
    const auto versionOf = [&](int status, const QByteArray &body) {
        network.fake->answer(status, body);
        return TestWait::await(provider.version(base, {}));
    };
    EXPECT_EQ(versionOf(200, R"({"version":"0.34.0"})"), u"0.34.0"_s);
    EXPECT_EQ(versionOf(500, R"({"version":"0.34.0"})"), std::nullopt);
    EXPECT_EQ(versionOf(200, R"({"version":34})"), std::nullopt);
    EXPECT_EQ(versionOf(200, "<html>"), std::nullopt);
    EXPECT_EQ(network.fake->requests()[0].url, QUrl(u"https://host.example.com/api/version"_s));
    EXPECT_EQ(network.fake->requests()[0].method, "GET");
    EXPECT_EQ(network.fake->requests()[0].timeout, 3s);

    const auto capabilitiesOf = [&](const QByteArray &body) {
        network.fake->answer(200, body);
        return TestWait::await(provider.capabilities(base, u"m"_s, {}));
    };
    EXPECT_EQ(capabilitiesOf(R"({"capabilities":["vision",1,"tools"]})"),
              (QStringList{u"vision"_s, u"tools"_s}));
    EXPECT_EQ(capabilitiesOf(R"({"capabilities":[]})"), QStringList());
    EXPECT_EQ(capabilitiesOf(R"({"capabilities":"vision"})"), std::nullopt);

    const auto modelsOf = [&](const QByteArray &body) {
        network.fake->answer(200, body);
        return TestWait::await(provider.modelList(base, {}));
    };
    EXPECT_EQ(
        modelsOf(R"({"models":[{"name":"a:1b","remote_model":"","remote_host":null},{"model":"b"},
                      {"name":"c","remote_model":"c"},{"name":"d","remote_host":"https://elsewhere.invalid"},
                      {"name":"e","remote_host":{"name":"elsewhere"}},{"size":1},7]})"),
        (std::vector<OllamaModel>{{u"a:1b"_s}, {u"b"_s}, {u"c"_s, true}, {u"d"_s, true}, {u"e"_s, true}}));
    EXPECT_EQ(modelsOf(R"({"models":null})"), std::vector<OllamaModel>());
    EXPECT_EQ(modelsOf(R"({"data":[]})"), std::nullopt);
    EXPECT_EQ(network.fake->requests().back().url, QUrl(u"https://host.example.com/api/tags"_s));
    EXPECT_EQ(network.fake->requests().back().timeout, 5s);
    for (const auto &[feature, carrying] : network.asked)
        EXPECT_EQ(carrying, SensitiveDataSet());
}

TEST_F(OllamaNativeProviderTest, AProbeEndsInItsTimeAlsoWhileBytesComeAndThrowsOnlyWhenItIsStopped)
{
    FakeHttpSession::Answer dripping;
    dripping.pieces = {R"({"version":")"};
    dripping.ending = FakeHttpSession::Ending::staysOpen;
    FakeHttpSession::Answer silent;
    silent.neverAnswers = true;
    for (const FakeHttpSession::Answer &answer : {dripping, silent}) {
        network.fake->answer(answer);
        const auto outcome = std::make_shared<TestWait::Outcome<std::optional<QString>>>();
        TestWait::collect(provider.version(configuration.baseURLString, {}), outcome);
        TestWait::settle();
        clock.advance(2999ms);
        EXPECT_FALSE(outcome->done);
        clock.advance(1ms);
        TestWait::settle();
        ASSERT_TRUE(outcome->done);
        EXPECT_EQ(*outcome->value, std::nullopt);
        EXPECT_EQ(network.fake->openRequests(), 0);
    }
    EXPECT_EQ(clock.pendingAlarms(), 0U);

    network.fake->answer(silent);
    std::stop_source stop;
    const auto outcome = std::make_shared<TestWait::Outcome<std::optional<QString>>>();
    TestWait::collect(provider.version(configuration.baseURLString, stop.get_token()), outcome);
    stop.request_stop();
    TestWait::until([&] { return outcome->done; });
    EXPECT_THROW(std::rethrow_exception(outcome->error), CancelledError);
}

TEST_F(OllamaNativeProviderTest, ADroppedReplyEndsItsRequestAtEachStage)
{
    FakeHttpSession::Answer silent;
    silent.neverAnswers = true;
    FakeHttpSession::Answer open;
    open.pieces = {R"({"message":{"content":"a"}})"};
    open.ending = FakeHttpSession::Ending::staysOpen;
    FakeHttpSession::Answer shown;
    shown.pieces = {noThinking};
    for (const std::vector<FakeHttpSession::Answer> &answers :
         {std::vector{silent}, std::vector{shown, silent}, std::vector{open}}) {
        for (const FakeHttpSession::Answer &answer : answers)
            network.fake->answer(answer);
        {
            const auto stream = provider.streamReply({}, configuration, {});
            TestWait::settle();
            EXPECT_EQ(network.fake->openRequests(), 1);
        }
        TestWait::settle();
        EXPECT_EQ(network.fake->openRequests(), 0);
    }
}

TEST_F(OllamaNativeProviderTest, AConnectionTestLooksAtTheStatusOnly)
{
    const auto injected = std::make_shared<FakeHttpSession>();
    OllamaNativeProvider own(network, clock, injected);
    injected->answer(200, "anything");
    EXPECT_EQ(TestWait::await(own.testConnection(configuration, {})), QString());
    EXPECT_EQ(injected->requests()[0].url, QUrl(u"http://localhost:11434/api/tags"_s));
    EXPECT_EQ(injected->requests()[0].timeout, 20s);
    injected->answer(401, {});
    try {
        TestWait::await(own.testConnection(configuration, {}));
        FAIL() << "a refused key passed the test";
    } catch (const ProviderError &error) {
        EXPECT_TRUE(error.is(Plain::authenticationFailed));
    }
    EXPECT_TRUE(network.asked.empty());
}

} // namespace

} // namespace morvane
