// What Ollama's own interface has of its own; what both dialects share is in ProviderSessionTest.

#include "ai/Dialects.h"
#include "ai/providers/ProviderFailure.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

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
    const auto outcome = [&](const QByteArray &body) {
        for (int i = 0; i < 3; ++i)
            session.answer(200, body);
        const auto version = TestWait::await(provider.version(base, {}));
        const auto abilities = TestWait::await(provider.capabilities(base, u"m"_s, {}));
        const auto models = TestWait::await(provider.modelList(base, {}));
        QStringList names;
        for (const OllamaModel &model : models.value_or(std::vector<OllamaModel>()))
            names += model.name + (model.runsElsewhere ? u" elsewhere"_s : QString());
        return u"version "_s + version.value_or(u"none"_s) + u"; capabilities "_s +
               (abilities ? u'[' + abilities->join(u", ") + u']' : u"none"_s) + u"; models "_s +
               (models ? u'[' + names.join(u", ") + u']' : u"none"_s);
    };
    const char *table = "ai/ollama_probes.txt";
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
    EXPECT_EQ(lineOf(session.requests()[0]), "GET https://host.example.com/api/version 3000");
    EXPECT_EQ(lineOf(session.requests()[1]), "POST https://host.example.com/api/show 5000");
    EXPECT_EQ(lineOf(session.requests()[2]), "GET https://host.example.com/api/tags 5000");
    for (const auto &[feature, carrying] : network.asked)
        EXPECT_EQ(carrying, SensitiveDataSet());

    session.answer(500, R"({"version":"0.34.0"})");
    EXPECT_EQ(TestWait::await(provider.version(base, {})), std::nullopt);
    const auto sent = session.requests().size();
    EXPECT_EQ(TestWait::await(provider.version(u"http://public.example.com"_s, {})), std::nullopt);
    EXPECT_EQ(session.requests().size(), sent) << "nothing goes to an address that may not be used";
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
