// What Ollama's own interface has of its own; what both dialects share is in ProviderSessionTest.

#include "ai/Dialects.h"
#include "ai/providers/ProviderFailure.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Plain = ProviderError::Plain;

namespace {

const QByteArray noThinking = R"({"capabilities":["completion","tools"]})";
const QByteArray thinking = R"({"capabilities":["completion","thinking"]})";
const QByteArray hello = ollama.text("hello") + ollama.end();
const FakeHttpSession::Answer silent{.neverAnswers = true};

class OllamaNativeProviderTest : public testing::Test {
protected:
    Reply reply() { return readReply(provider.streamReply({}, configuration, {})); }
    // Method, address and milliseconds.
    static QByteArray lineOf(const HttpRequest &request)
    {
        return request.method + ' ' + request.url.toEncoded() + ' ' +
               QByteArray::number(static_cast<qint64>(request.timeout.count()));
    }
    QJsonObject lastBody() const { return QJsonDocument::fromJson(session.requests().back().body).object(); }

    AIConfiguration configuration = [] {
        AIConfiguration c;
        c.baseURLString = u"http://localhost:11434/v1?key=1"_s;
        c.model = u" qwen3:8b\t"_s;
        c.carrying = SensitiveData::memory;
        return c;
    }();
    FakeHttpSessionProvider network;
    FakeHttpSession &session = *network.fake;
    ManualClock clock;
    OllamaNativeProvider provider{network, clock};
    LogCapture log;
};

TEST_F(OllamaNativeProviderTest, AsksOnceWhatTheModelCanDoAndCarriesNothingThere)
{
    session.answer(200, thinking);
    session.answer(200, hello);
    EXPECT_EQ(reply().text(), u"hello"_s);
    ASSERT_EQ(session.requests().size(), 2U);
    EXPECT_EQ(lineOf(session.requests()[0]), "POST http://localhost:11434/api/show 5000");
    EXPECT_EQ(session.requests()[0].body, R"({"model":"qwen3:8b"})");
    EXPECT_EQ(lineOf(session.requests()[1]), "POST http://localhost:11434/api/chat 120000");
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
        {u"unknown"_s, 404, thinking, false, none, false},
        {u"unknown"_s, 200, R"({"details":{}})", true, true, false},
        {u"unknown"_s, 200, "not json", false, none, false},
    };
    for (const auto &row : cases) {
        configuration.model = row.model;
        configuration.thinksLonger = row.thinksLonger;
        session.answer(row.status, row.shown);
        for (int asked = 0; asked < (row.isRemembered ? 2 : 1); ++asked) {
            session.answer(200, hello);
            reply();
            EXPECT_EQ(lastBody().value("think"_L1), row.expected) << row.shown.toStdString();
        }
    }
}

TEST_F(OllamaNativeProviderTest, YieldsEventsInTheirOrderAndNumbersCallsThroughTheReply)
{
    session.answer(200, noThinking);
    session.answer(200, R"({"message":{"content":"","thinking":"hm"}}
skipped
{"message":{"content":"a"}}
{"message":{"tool_calls":[{"function":{"name":"f","arguments":{"x":1}}}]}}
{"message":{"content":"b","tool_calls":[{"id":"own","function":{"name":"g"}},{"function":{"name":"h"}}]}}
{"message":{"content":"c"},"done":true,"done_reason":"length"}
{"message":{"content":"never"}}
)");
    EXPECT_EQ(reply().events,
              (std::vector<AIStreamEvent>{AIStream::Thinking{}, AIStream::Text{u"a"_s},
                                          AIStream::Text{u"b"_s}, AIStream::Text{u"c"_s},
                                          AIStream::ToolCalls{{{u"call_0"_s, u"f"_s, u"{\"x\":1}"_s},
                                                               {u"own"_s, u"g"_s, u"{}"_s},
                                                               {u"call_2"_s, u"h"_s, u"{}"_s}}},
                                          AIStream::TruncatedByTokenLimit{}}));
}

TEST_F(OllamaNativeProviderTest, TheServersWordsDecideAboutAnError)
{
    const std::tuple<int, QByteArray, ProviderError::Case> cases[] = {
        {400, R"({"error":"This model does not support VISION."})", Plain::modelLacksVision},
        {500, R"({"error":"missing data required for image input"})", Plain::modelLacksVision},
        {400, R"({"error":"does not support tools"})", ProviderError::ServerError{400}},
        {403, R"({"error":{"message":"vision"}})", Plain::authenticationFailed},
        {404, R"({"error":")" + QByteArray(ProviderFailure::errorBodyLimit, 'x') + R"( image"})",
         ProviderError::ServerError{404}},
        {200, ollama.text("a") + "{\"error\":\"out of memory\"}\n",
         ProviderError::ModelError{u"out of memory"_s}},
        {200, R"({"message":{"thinking":"hm"},"done":true})", Plain::emptyResponse},
    };
    session.answer(200, noThinking);
    for (const auto &[status, body, expected] : cases) {
        session.answer(status, body);
        EXPECT_EQ(reply().error, ProviderError(expected)) << status << body.first(40).toStdString();
    }
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Native Ollama HTTP 400: <private>"_s));
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Native Ollama stream error: <private>"_s));
}

TEST_F(OllamaNativeProviderTest, ProbesReadWhatTheServerTellsAndNothingElse)
{
    const QString base = u"https://host.example.com/deep/v1"_s;
    const auto versionOf = [&](int status, const QByteArray &body) {
        session.answer(status, body);
        return TestWait::await(provider.version(base, {}));
    };
    EXPECT_EQ(versionOf(200, R"({"version":"0.34.0"})"), u"0.34.0"_s);
    EXPECT_EQ(versionOf(500, R"({"version":"0.34.0"})"), std::nullopt);
    EXPECT_EQ(versionOf(200, R"({"version":34})"), std::nullopt);
    EXPECT_EQ(lineOf(session.requests()[0]), "GET https://host.example.com/api/version 3000");

    const auto capabilitiesOf = [&](const QByteArray &body) {
        session.answer(200, body);
        return TestWait::await(provider.capabilities(base, u"m"_s, {}));
    };
    EXPECT_EQ(capabilitiesOf(R"({"capabilities":["vision",1,"tools"]})"),
              (QStringList{u"vision"_s, u"tools"_s}));
    EXPECT_EQ(capabilitiesOf(R"({"capabilities":[]})"), QStringList());
    EXPECT_EQ(capabilitiesOf(R"({"capabilities":"vision"})"), std::nullopt);

    const auto modelsOf = [&](const QByteArray &body) {
        session.answer(200, body);
        return TestWait::await(provider.modelList(base, {}));
    };
    EXPECT_EQ(
        modelsOf(R"({"models":[{"name":"a:1b","remote_model":"","remote_host":null},{"model":"b"},
                      {"name":"c","remote_model":"c"},{"name":"d","remote_host":"https://elsewhere.invalid"},
                      {"name":"e","remote_host":{"name":"elsewhere"}},{"size":1},7]})"),
        (std::vector<OllamaModel>{{u"a:1b"_s}, {u"b"_s}, {u"c"_s, true}, {u"d"_s, true}, {u"e"_s, true}}));
    EXPECT_EQ(modelsOf(R"({"models":null})"), std::vector<OllamaModel>());
    EXPECT_EQ(modelsOf(R"({"data":[]})"), std::nullopt);
    EXPECT_EQ(lineOf(session.requests().back()), "GET https://host.example.com/api/tags 5000");
    for (const auto &[feature, carrying] : network.asked)
        EXPECT_EQ(carrying, SensitiveDataSet());
    EXPECT_EQ(TestWait::await(provider.version(u"http://public.example.com"_s, {})), std::nullopt);
    EXPECT_EQ(session.requests().size(), 9U) << "nothing goes to an address that may not be used";
}

TEST_F(OllamaNativeProviderTest, AProbeEndsInItsTimeAlsoWhileBytesComeAndThrowsOnlyWhenItIsStopped)
{
    const auto ask = [this](const FakeHttpSession::Answer &answer, std::stop_token stop = {}) {
        session.answer(answer);
        auto outcome = std::make_shared<TestWait::Outcome<std::optional<QString>>>();
        TestWait::collect(provider.version(configuration.baseURLString, std::move(stop)), outcome);
        TestWait::settle();
        return outcome;
    };
    const FakeHttpSession::Answer dripping{.pieces = {R"({"version":")"},
                                           .ending = FakeHttpSession::Ending::staysOpen};
    for (const FakeHttpSession::Answer &answer : {dripping, silent}) {
        const auto outcome = ask(answer);
        clock.advance(2999ms);
        EXPECT_FALSE(outcome->done);
        clock.advance(1ms);
        TestWait::settle();
        ASSERT_TRUE(outcome->done);
        EXPECT_EQ(*outcome->value, std::nullopt);
        EXPECT_EQ(session.openRequests(), 0);
    }
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    std::stop_source stop;
    const auto outcome = ask(silent, stop.get_token());
    stop.request_stop();
    TestWait::until([&] { return outcome->done; });
    EXPECT_THROW(std::rethrow_exception(outcome->error), CancelledError);
}

TEST_F(OllamaNativeProviderTest, AReplyDroppedDuringItsProbeSendsNoQuestion)
{
    session.answer(silent);
    {
        const auto stream = provider.streamReply({}, configuration, {});
        TestWait::settle();
        EXPECT_EQ(session.openRequests(), 1);
    }
    TestWait::settle();
    EXPECT_EQ(session.openRequests(), 0);
    EXPECT_EQ(session.requests().size(), 1U);
}

TEST_F(OllamaNativeProviderTest, AConnectionTestLooksAtTheStatusOnly)
{
    const auto injected = std::make_shared<FakeHttpSession>();
    OllamaNativeProvider own(network, clock, injected);
    injected->answer(200, "anything");
    EXPECT_EQ(TestWait::await(own.testConnection(configuration, {})), QString());
    EXPECT_EQ(lineOf(injected->requests()[0]), "GET http://localhost:11434/api/tags 20000");
    injected->answer(401, {});
    EXPECT_THROW(TestWait::await(own.testConnection(configuration, {})), ProviderError);
    EXPECT_TRUE(network.asked.empty());
}

} // namespace

} // namespace morvane
