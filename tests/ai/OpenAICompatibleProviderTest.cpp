#include "ai/providers/OpenAICompatibleProvider.h"

#include "ai/ReplyReading.h"
#include "ai/contract/ProviderError.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ProcessMemory.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

namespace {

QByteArray textLine(const char *text)
{
    return "data: {\"choices\":[{\"delta\":{\"content\":\"" + QByteArray(text) + "\"}}]}\n\n";
}

const QByteArray doneLine = "data: [DONE]\n\n";
const QByteArray wholeReply = R"({"choices":[{"message":{"content":"whole"},"finish_reason":"length"}]})";

class OpenAICompatibleProviderTest : public testing::Test {
protected:
    AsyncStream<AIStreamEvent> ask(std::vector<AITool> tools = {})
    {
        return provider.streamReply({{AIMessage::Role::user, u"hello"_s}}, configuration, std::move(tools));
    }
    // The reply to one streamed answer with this body.
    Reply replyTo(QByteArray body)
    {
        network.fake->answer(200, std::move(body));
        return readReply(ask());
    }
    QJsonObject sentBody(std::size_t request = 0) const
    {
        return QJsonDocument::fromJson(network.fake->requests().at(request).body).object();
    }

    AIConfiguration configuration = [] {
        AIConfiguration c;
        c.baseURLString = u"https://api.example.com/v1"_s;
        c.apiKey = u" key "_s;
        c.model = u" some-model\t"_s;
        c.temperature = 0.25;
        c.maxOutputTokens = 2048;
        c.requestTimeout = 1.5;
        c.purpose = u"chat"_s;
        c.carrying = SensitiveData::memory;
        return c;
    }();
    FakeHttpSessionProvider network;
    OpenAICompatibleProvider provider{network};
    LogCapture log;
};

TEST_F(OpenAICompatibleProviderTest, SendsOneRequestWithWhatWasConfigured)
{
    const AITool tool{
        u"look"_s,
        u"Looks."_s,
        {{u"where"_s, AITool::Parameter::Kind::string, u"Place."_s, true, {u"here"_s, u"there"_s}},
         {u"times"_s, AITool::Parameter::Kind::number, u"How often."_s, false, {}},
         {u"again"_s, AITool::Parameter::Kind::boolean, u"Once more."_s, true, {}}},
        {},
        u"Look"_s,
        {}};
    network.fake->answer(200, textLine("hi") + doneLine);
    EXPECT_EQ(readReply(ask({tool})).text(), u"hi"_s);

    ASSERT_EQ(network.fake->requests().size(), 1U);
    const HttpRequest &request = network.fake->requests().front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url.toString(), u"https://api.example.com/v1/chat/completions"_s);
    EXPECT_EQ(request.timeout.count(), 1500);
    ASSERT_EQ(request.headers.size(), 2U);
    EXPECT_EQ(request.headers[0].name + ": " + request.headers[0].value, "Content-Type: application/json");
    EXPECT_EQ(request.headers[1].name + ": " + request.headers[1].value, "Authorization: Bearer  key ");
    const QJsonObject expected = QJsonDocument::fromJson(R"({
        "model": " some-model\t", "temperature": 0.25, "max_tokens": 2048, "stream": true, "purpose": "chat",
        "messages": [{"role": "user", "content": "hello"}], "tool_choice": "auto",
        "tools": [{"type": "function", "function": {"name": "look", "description": "Looks.", "parameters": {
            "type": "object", "required": ["where", "again"], "properties": {
                "where": {"type": "string", "description": "Place.", "enum": ["here", "there"]},
                "times": {"type": "number", "description": "How often."},
                "again": {"type": "boolean", "description": "Once more."}}}}}]})")
                                     .object();
    EXPECT_EQ(sentBody(), expected);
    ASSERT_EQ(network.asked.size(), 1U);
    EXPECT_EQ(network.asked[0].first, EgressFeature::aiModel);
    EXPECT_EQ(network.asked[0].second, SensitiveDataSet(SensitiveData::memory));
}

TEST_F(OpenAICompatibleProviderTest, LeavesOutWhatIsEmptyAndUsesAnInjectedSession)
{
    configuration.apiKey = u""_s;
    configuration.purpose = u""_s;
    configuration.preferStreaming = false;
    const auto injected = std::make_shared<FakeHttpSession>();
    injected->answer(200, wholeReply);
    OpenAICompatibleProvider own(network, injected);
    const Reply reply = readReply(own.streamReply({}, configuration, {}));
    EXPECT_EQ(reply.events,
              (std::vector<AIStreamEvent>{AIStream::Text{u"whole"_s}, AIStream::TruncatedByTokenLimit{}}));
    EXPECT_TRUE(network.asked.empty());
    EXPECT_EQ(injected->requests()[0].headers.size(), 1U);
    const auto sent = QJsonDocument::fromJson(injected->requests()[0].body).object();
    EXPECT_EQ(sent.keys(), (QStringList{u"max_tokens"_s, u"messages"_s, u"model"_s, u"temperature"_s}));
    EXPECT_EQ(log.lines(),
              (QStringList{u"ai-provider: Starting non-streaming request to model  some-model\t"_s,
                           u"ai-provider: Non-streaming request completed"_s}));
}

TEST_F(OpenAICompatibleProviderTest, RefusesBeforeAnythingIsSent)
{
    configuration.model = u" \t "_s;
    EXPECT_EQ(readReply(ask()).error, ProviderError(Plain::notConfigured));
    configuration.model = u"m"_s;
    configuration.baseURLString = u"http://api.example.com"_s;
    EXPECT_EQ(readReply(ask()).error,
              ProviderError(ProviderError::InsecureBaseURL{u"http://api.example.com"_s}));
    EXPECT_TRUE(network.fake->requests().empty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(OpenAICompatibleProviderTest, FollowsARedirectOnlyWhereTheUserCouldHavePointed)
{
    replyTo(textLine("x"));
    const auto &follows = network.fake->requests()[0].followsRedirect;
    const QUrl from(u"https://api.example.com/v1/chat/completions"_s);
    EXPECT_TRUE(follows(from, QUrl(u"https://other.example.com/v1"_s)));
    EXPECT_TRUE(follows(from, QUrl(u"http://192.168.1.4:8080/v1"_s)));
    EXPECT_FALSE(follows(from, QUrl(u"http://api.example.com/v1/chat/completions"_s)));
    EXPECT_FALSE(follows(from, QUrl(u"file:///etc/passwd"_s)));
    const QUrl near(u"http://192.168.1.4:8080/v1"_s);
    EXPECT_TRUE(follows(near, QUrl(u"https://box.local/v1"_s)));
    EXPECT_FALSE(follows(near, from)) << "a reply from nearby comes from nearby";
}

TEST_F(OpenAICompatibleProviderTest, YieldsTextAsItsLinesArrive)
{
    FakeHttpSession::Answer answer;
    answer.ending = FakeHttpSession::Ending::staysOpen;
    network.fake->answer(answer);
    auto stream = ask();
    TestWait::settle();
    const QByteArray body = textLine("Hel") + ": note\n\n" + textLine("lo");
    network.fake->feed(body.first(20));
    TestWait::settle();
    EXPECT_EQ(stream.takeBuffered(), std::nullopt);
    network.fake->feed(body.mid(20));
    TestWait::settle();
    EXPECT_EQ(stream.takeBuffered(), AIStreamEvent(AIStream::Text{u"Hel"_s}));
    EXPECT_EQ(stream.takeBuffered(), AIStreamEvent(AIStream::Text{u"lo"_s}));

    // The sentinel ends the reading although the body goes on; it may not go on for long.
    network.fake->feed(doneLine + textLine("never"));
    EXPECT_TRUE(readReply(std::move(stream)).events.empty());
    network.fake->feed(QByteArray(5000, 'x'));
    TestWait::settle();
    EXPECT_EQ(network.fake->openRequests(), 0);
    EXPECT_EQ(log.lines(), (QStringList{u"ai-provider: Starting streamed request to model  some-model\t"_s,
                                        u"ai-provider: Streamed request completed"_s}));
}

TEST_F(OpenAICompatibleProviderTest, EndsWithCallsThenTruncation)
{
    const QByteArray call =
        R"(data: {"choices":[{"delta":{"tool_calls":[{"id":"a","function":{"name":"f"}}]}}]})";
    const QByteArray length = R"(data: {"choices":[{"finish_reason":"length"}]})";
    EXPECT_EQ(
        replyTo(length + "\n" + call + "\n" + textLine("x") + doneLine).events,
        (std::vector<AIStreamEvent>{AIStream::Text{u"x"_s}, AIStream::ToolCalls{{{u"a"_s, u"f"_s, u"{}"_s}}},
                                    AIStream::TruncatedByTokenLimit{}}));
    // A call that never got its name was content all the same: no events, no second request.
    const Reply nameless = replyTo(R"(data: {"choices":[{"delta":{"tool_calls":[{"index":0}]}}]})");
    EXPECT_TRUE(nameless.events.empty());
    EXPECT_EQ(nameless.error, std::nullopt);
    // The last line needs no line end.
    EXPECT_EQ(replyTo(textLine("tail").trimmed()).text(), u"tail"_s);
    EXPECT_EQ(network.fake->requests().size(), 3U);
}

TEST_F(OpenAICompatibleProviderTest, ReadsAPlainBodyFromTheStream)
{
    const QByteArray body = QJsonDocument::fromJson(wholeReply).toJson(QJsonDocument::Indented);
    EXPECT_EQ(replyTo(": padding\n").error,
              ProviderError(Plain::networkUnavailable)); // the retry has no answer
    EXPECT_EQ(replyTo(body).events,
              (std::vector<AIStreamEvent>{AIStream::Text{u"whole"_s}, AIStream::TruncatedByTokenLimit{}}));
    EXPECT_EQ(network.fake->requests().size(), 3U);
}

TEST_F(OpenAICompatibleProviderTest, AsksOnceMoreWithoutStreamingWhenNoContentCame)
{
    network.fake->answer(200, R"(data: {"choices":[{"finish_reason":"stop"}]})"
                              "\n" +
                                  doneLine);
    network.fake->answer(200, wholeReply);
    EXPECT_EQ(readReply(ask()).text(), u"whole"_s);
    ASSERT_EQ(network.fake->requests().size(), 2U);
    EXPECT_TRUE(sentBody(0).contains("stream"_L1));
    EXPECT_FALSE(sentBody(1).contains("stream"_L1));
    EXPECT_EQ(log.lines(),
              (QStringList{u"ai-provider: Starting streamed request to model  some-model\t"_s,
                           u"ai-provider: Stream yielded no tokens; retrying non-streaming"_s,
                           u"ai-provider: Starting non-streaming request to model  some-model\t"_s,
                           u"ai-provider: Non-streaming request completed"_s,
                           u"ai-provider: Streamed request completed"_s}));

    network.fake->answer(200, doneLine);
    network.fake->answer(200, R"({"choices":[{"message":{"content":""}}]})");
    EXPECT_EQ(readReply(ask()).error, ProviderError(Plain::emptyResponse));
    EXPECT_EQ(network.fake->requests().size(), 4U);
}

struct StatusCase {
    int status;
    QByteArray body;
    ProviderError::Case error;
    QString line;
};

TEST_F(OpenAICompatibleProviderTest, NamesTheErrorOfEachStatusAndLogsTheServersWords)
{
    const QByteArray longWords(161, 'w');
    const std::vector<StatusCase> cases{
        {401, R"({"error":{"message":"bad\nkey"}})", Plain::authenticationFailed, u"401: bad key"_s},
        {403, {}, Plain::authenticationFailed, u"403"_s},
        {429, R"({"message":"slow down"})", Plain::rateLimited, u"429: slow down"_s},
        {500, R"({"error":"text","message":"top"})", ProviderError::ServerError{500}, u"500: top"_s},
        {404, R"({"error":{"message":""}})", ProviderError::ServerError{404}, u"404"_s},
        {302, "<html>", ProviderError::ServerError{302}, u"302"_s},
        {503, "{\"error\":{\"message\":\"" + longWords + "\"}}", ProviderError::ServerError{503},
         u"503: %1…"_s.arg(QString(160, u'w'))},
    };
    for (const bool streams : {true, false}) {
        configuration.preferStreaming = streams;
        for (const StatusCase &c : cases) {
            network.fake->answer(c.status, c.body);
            EXPECT_EQ(readReply(ask()).error, ProviderError(c.error)) << c.status;
            EXPECT_EQ(log.lines().last(), u"ai-provider: Provider HTTP error "_s + c.line);
        }
    }
}

TEST_F(OpenAICompatibleProviderTest, ReadsNoMoreOfAnErrorThanItNeeds)
{
    FakeHttpSession::Answer endless;
    endless.status = 500;
    endless.pieces.assign(3, QByteArray(40'000, 'x'));
    endless.ending = FakeHttpSession::Ending::staysOpen;
    network.fake->answer(endless);
    EXPECT_EQ(readReply(ask()).error, ProviderError(ProviderError::ServerError{500}));
    EXPECT_EQ(network.fake->openRequests(), 0);

    // A connection that breaks in an error's body changes nothing about the status.
    FakeHttpSession::Answer broken;
    broken.status = 429;
    broken.bodyError = std::make_exception_ptr(TransportError(TransportError::Code::ConnectionLost, {}));
    network.fake->answer(broken);
    EXPECT_EQ(readReply(ask()).error, ProviderError(Plain::rateLimited));
}

TEST_F(OpenAICompatibleProviderTest, MapsTransportErrorsBeforeAndDuringTheReply)
{
    using Code = TransportError::Code;
    const ProviderError::InvalidBaseURL badAddress{u"the configured URL"_s};
    const std::vector<std::pair<Code, ProviderError::Case>> cases{
        {Code::Cancelled, Plain::cancelled},
        {Code::TimedOut, Plain::networkTimeout},
        {Code::BadURL, badAddress},
        {Code::UnsupportedURL, badAddress},
        {Code::Blocked, Plain::networkUnavailable},
        {Code::CannotConnect, Plain::networkUnavailable},
        {Code::ConnectionLost, Plain::networkUnavailable},
        {Code::InsecureConnection, Plain::networkUnavailable},
        {Code::TooManyRedirects, Plain::networkUnavailable},
        {Code::Other, Plain::networkUnavailable},
    };
    for (const bool streams : {true, false}) {
        configuration.preferStreaming = streams;
        for (const auto &[code, reason] : cases) {
            const ProviderError expected(reason);
            FakeHttpSession::Answer refused;
            refused.sendError = std::make_exception_ptr(TransportError(code, {}));
            network.fake->answer(refused);
            EXPECT_EQ(readReply(ask()).error, expected);
            FakeHttpSession::Answer broken;
            broken.pieces = {textLine("kept")};
            broken.bodyError = refused.sendError;
            network.fake->answer(broken);
            const Reply reply = readReply(ask());
            EXPECT_EQ(reply.error, expected);
            EXPECT_EQ(reply.text(), streams ? u"kept"_s : QString());
        }
    }
}

TEST_F(OpenAICompatibleProviderTest, EndsWhatIsBeyondItsBounds)
{
    FakeHttpSession::Answer endless; // no line end in sight
    endless.pieces.assign(2, QByteArray(OpenAICompatibleProvider::longestLine / 2 + 1, 'x'));
    endless.ending = FakeHttpSession::Ending::staysOpen;
    network.fake->answer(endless);
    EXPECT_EQ(readReply(ask()).error, ProviderError(Plain::malformedResponse));
    configuration.preferStreaming = false;
    network.fake->answer(endless);
    EXPECT_EQ(readReply(ask()).error, ProviderError(Plain::malformedResponse));
    EXPECT_EQ(network.fake->openRequests(), 0);
}

TEST_F(OpenAICompatibleProviderTest, TheCostliestLineStaysAffordable)
{
    if (ProcessMemory::isInstrumented())
        GTEST_SKIP() << "the sanitizer keeps freed memory";
    for (const char *list : {R"({"choices":[)", R"({"choices":[{"delta":{"tool_calls":[)"}) {
        for (const char *element : {"[0],", "{\"\":0},", "{},"}) {
            QByteArray line = "data: " + QByteArray(list);
            line.reserve(OpenAICompatibleProvider::longestLine);
            while (line.size() < OpenAICompatibleProvider::longestLine - 32)
                line += element;
            line.chop(1);
            line += line.contains("delta") ? "]}}]}\n" : "]}\n";
            EXPECT_LT(ProcessMemory::peakMebibytes([&] { replyTo(line); }), 120) << list << element;
        }
    }
}

TEST_F(OpenAICompatibleProviderTest, DroppingTheStreamEndsTheRequest)
{
    FakeHttpSession::Answer silent;
    silent.neverAnswers = true;
    FakeHttpSession::Answer open;
    open.pieces = {textLine("x")};
    open.ending = FakeHttpSession::Ending::staysOpen;
    for (const auto &answer : {silent, open}) {
        network.fake->answer(answer);
        {
            const auto stream = ask();
            TestWait::settle();
            EXPECT_EQ(network.fake->openRequests(), 1);
        }
        TestWait::settle();
        EXPECT_EQ(network.fake->openRequests(), 0);
    }
}

TEST_F(OpenAICompatibleProviderTest, AReplyOutlivesItsProvider)
{
    FakeHttpSession::Answer open;
    open.ending = FakeHttpSession::Ending::staysOpen;
    network.fake->answer(open);
    auto shortLived = std::make_unique<OpenAICompatibleProvider>(network);
    auto stream = shortLived->streamReply({}, configuration, {});
    shortLived.reset();
    network.fake->feed(textLine("still here") + doneLine);
    network.fake->closeBody();
    EXPECT_EQ(readReply(std::move(stream)).text(), u"still here"_s);
}

TEST_F(OpenAICompatibleProviderTest, TriesAConnectionWithOneShortQuestion)
{
    network.fake->answer(200, R"({"choices":[{"message":{"content":"No."}}]})");
    EXPECT_EQ(TestWait::await(provider.testConnection(configuration, {})), u"No."_s);
    EXPECT_EQ(network.fake->requests()[0].timeout.count(), 20'000);
    EXPECT_EQ(sentBody()["max_tokens"_L1].toInt(), 8);
    EXPECT_FALSE(sentBody().contains("stream"_L1));
    EXPECT_EQ(
        sentBody()["messages"_L1].toArray(),
        QJsonDocument::fromJson(R"([{"role":"user","content":"Reply with the single word: ok"}])").array());

    const auto failure = [&](std::stop_token stop = {}) -> std::optional<ProviderError> {
        try {
            TestWait::await(provider.testConnection(configuration, std::move(stop)));
        } catch (const ProviderError &error) {
            return error;
        }
        return std::nullopt;
    };
    network.fake->answer(
        200, R"({"choices":[{"message":{"content":"","tool_calls":[{"function":{"name":"f"}}]}}]})");
    EXPECT_EQ(failure(), ProviderError(Plain::emptyResponse));
    network.fake->answer(401, {});
    EXPECT_EQ(failure(), ProviderError(Plain::authenticationFailed));
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_EQ(failure(stopped.get_token()), ProviderError(Plain::cancelled));
}

} // namespace

} // namespace morvane
