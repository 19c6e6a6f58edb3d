// What Ollama's own interface has of its own; what both dialects share is in ProviderSessionTest.

#include "ai/Dialects.h"
#include "network/AppNetwork.h"
#include "network/NetworkLedger.h"
#include "support/ManualClock.h"
#include "support/ScriptedServer.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray noThinking = R"({"capabilities":["completion","tools"]})";
const QByteArray hello = ollama.text("hello") + ollama.end();
const FakeHttpSession::Answer silent{.neverAnswers = true};

class OllamaNativeProviderTest : public ScriptedSessionTest {
protected:
    OllamaNativeProviderTest() { configuration.carrying = SensitiveData::memory; }

    Reply reply() { return readReply(provider.streamReply({}, configuration, {})); }
    // Method, address and milliseconds, of silence or in all.
    static QByteArray lineOf(const HttpRequest &request)
    {
        return request.method + ' ' + request.url.toEncoded() + ' ' +
               QByteArray::number(static_cast<qint64>(request.limit.value_or(request.timeout).count())) +
               (request.limit ? " in all" : "");
    }

    OllamaNativeProvider provider{network};
};

TEST_F(OllamaNativeProviderTest, AsksForThinkingWhereTheModelThinksAndRemembersWhatItWasTold)
{
    const auto outcome = [this](const QByteArray &line) {
        const QByteArrayList words = line.split(' '); // model, wish, status and what the server tells of it
        configuration.model = QString::fromUtf8(words[0]);
        configuration.thinksLonger = words[1] == "longer";
        const auto sent = session.requests().size();
        session.answer(words[2].toInt(), words[3]);
        session.answer(200, hello);
        reply();
        const QString think = lastBody().value("think"_L1).toVariant().toString();
        session.answer(200, hello);
        reply();
        return (think.isEmpty() ? u"nothing"_s : think) +
               (session.requests().size() == sent + 3 ? u", asked once"_s : u", asked again"_s);
    };
    TestData::expect("ai/ollama_thinking.txt", outcome);
    EXPECT_EQ(network.asked[0].second, SensitiveDataSet(SensitiveData::memory));
    EXPECT_EQ(network.asked[1].second, SensitiveDataSet()) << "what is asked about the model carries nothing";
}

TEST_F(OllamaNativeProviderTest, TheServersWordsDecideAboutAnError)
{
    session.answer(200, noThinking);
    const auto outcome = [this](const QByteArray &line) {
        session.answer(line.first(3).toInt(), line.mid(4));
        const auto error = reply().error;
        return error ? error->userMessage() : u"no error"_s;
    };
    TestData::expect("ai/ollama_errors.txt", outcome);
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Native Ollama HTTP 400: <private>"_s));
    EXPECT_TRUE(log.lines().contains(u"ai-provider: Native Ollama stream error: <private>"_s));
}

TEST_F(OllamaNativeProviderTest, ProbesReadWhatTheServerTellsAndNothingElse)
{
    const QString base = u"https://host.example.com/deep/v1"_s;
    const auto outcome = [&](const QByteArray &body) {
        for (int i = 0; i < 3; ++i)
            session.answer(200, body);
        const auto version = TestWait::await(provider.version(base, {})).told;
        const auto abilities = TestWait::await(provider.capabilities(base, u"m"_s, {})).told;
        const auto models = TestWait::await(provider.modelList(base, {})).told;
        QStringList names;
        for (const OllamaModel &model : models.value_or(std::vector<OllamaModel>()))
            names += model.name + (model.runsElsewhere ? u" elsewhere"_s : QString());
        return u"version "_s + version.value_or(u"none"_s) + u"; capabilities "_s +
               (abilities ? u'[' + abilities->join(u", ") + u']' : u"none"_s) + u"; models "_s +
               (models ? u'[' + names.join(u", ") + u']' : u"none"_s);
    };
    TestData::expect("ai/ollama_probes.txt", outcome);
    EXPECT_EQ(lineOf(session.requests()[0]), "GET https://host.example.com/api/version 3000 in all");
    EXPECT_EQ(lineOf(session.requests()[1]), "POST https://host.example.com/api/show 5000 in all");
    EXPECT_EQ(lineOf(session.requests()[2]), "GET https://host.example.com/api/tags 5000 in all");
    for (const auto &[feature, carrying] : network.asked)
        EXPECT_EQ(carrying, SensitiveDataSet());

    OllamaNativeProvider keyed(network, [](const QString &address) {
        return address.contains("host."_L1) ? std::optional(u"secret"_s) : std::nullopt;
    });
    for (const QString &address : {base, u"http://localhost:11434/v1"_s}) {
        session.answer(200, "{}");
        (void)TestWait::await(keyed.modelList(address, {}));
        const auto &headers = session.requests().back().headers;
        EXPECT_EQ(headers.back().value, address == base ? "Bearer secret" : "MorvaneGPT/" MORVANE_VERSION);
    }
    session.answer(500, R"({"version":"0.34.0"})");
    EXPECT_EQ(TestWait::await(provider.version(base, {})).told, std::nullopt);
    const auto sent = session.requests().size();
    EXPECT_EQ(TestWait::await(provider.version(u"http://public.example.com"_s, {})).told, std::nullopt);
    EXPECT_EQ(session.requests().size(), sent) << "nothing goes to an address that may not be used";
}

TEST_F(OllamaNativeProviderTest, AProbeTellsANoFromNobodyAndThrowsOnlyWhenItIsStopped)
{
    const auto failing = [](TransportError::Code code) {
        return std::make_exception_ptr(TransportError(code, {}));
    };
    using Code = TransportError::Code;
    const std::vector<std::pair<FakeHttpSession::Answer, bool>> answers{
        {{.status = 200, .pieces = {"another page"}}, true},
        {{.status = 404}, true},
        {{.bodyError = failing(Code::ResponseTooLarge)}, true},
        {{.status = 503}, false},
        {{.sendError = failing(Code::CannotConnect)}, false},
        {{.bodyError = failing(Code::ConnectionLost)}, false}};
    for (const auto &[answer, wasHeard] : answers) {
        session.answer(answer);
        const auto version = TestWait::await(provider.version(configuration.baseURLString, {}));
        EXPECT_EQ(version.told, std::nullopt);
        EXPECT_EQ(version.wasHeard, wasHeard);
    }
    std::stop_source stop;
    session.answer(silent);
    const auto outcome = TestWait::begin(provider.version(configuration.baseURLString, stop.get_token()));
    stop.request_stop();
    TestWait::until([&] { return outcome->done; });
    EXPECT_THROW(std::rethrow_exception(outcome->error), CancelledError);
}

TEST(OllamaProbeRowTest, TellsTheStatusOfAServerThatKnowsNoSuchPathHoweverMuchItSays)
{
    ManualClock clock;
    NetworkLedger ledger;
    AppNetwork real(ledger, clock);
    OllamaNativeProvider provider(real);
    for (const qsizetype size : {0, 300, 200'000}) {
        const ScriptedServer server(
            ScriptedServer::answering(ScriptedServer::response("404 Not Found", QByteArray(size, 'x'))));
        const QString base = server.url(u"/v1"_s).toString();
        EXPECT_EQ(TestWait::await(provider.version(base, {})).told, std::nullopt);
        EXPECT_EQ(TestWait::await(provider.capabilities(base, u"m"_s, {})).told, std::nullopt);
    }
    for (const NetworkLedger::Entry &row : ledger.snapshot().entries)
        EXPECT_EQ(row.outcome.text(), u"HTTP 404"_s);
    EXPECT_EQ(ledger.snapshot().entries.size(), 6U);
}

} // namespace

} // namespace morvane
