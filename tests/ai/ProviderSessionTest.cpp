// Each provider over a scripted session: what it does with every status, every failure of the network and
// every byte too many.

#include "ai/Dialects.h"
#include "ai/providers/ProviderFailure.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Answer = FakeHttpSession::Answer;
using Ending = FakeHttpSession::Ending;
using Plain = ProviderError::Plain;

namespace {

class ProviderSessionTest : public ScriptedSessionTest, public testing::WithParamInterface<Dialect> {
protected:
    // Ollama is asked once what its model can do.
    ProviderSessionTest()
    {
        if (!dialect.isOllama)
            return;
        session.answer(200, R"({"capabilities":["completion"]})");
        replyTo({.pieces = {dialect.end()}});
    }

    AsyncStream<AIStreamEvent> ask() { return provider->streamReply({}, configuration, {}); }
    Reply replyTo(Answer answer)
    {
        session.answer(std::move(answer));
        return readReply(ask());
    }
    // A reply that goes on until it is ended.
    AsyncStream<AIStreamEvent> askForOpenReply()
    {
        session.answer({.ending = Ending::staysOpen});
        auto stream = ask();
        TestWait::settle();
        return stream;
    }

    Dialect dialect = GetParam();
    std::unique_ptr<AIProvider> provider = dialect.provider(network);
};

INSTANTIATE_TEST_SUITE_P(Both, ProviderSessionTest, testing::Values(chatCompletions, ollama), dialectName);

// All of a request: its line, how long it may take, its headers and its body.
std::string described(const HttpRequest &request)
{
    QByteArray all = request.method + ' ' + request.url.toEncoded() + "\n" +
                     QByteArray::number(static_cast<qint64>(request.timeout.count())) + " ms\n";
    for (const auto &header : request.headers)
        all += header.name + ": " + header.value + '\n';
    all.replace(MORVANE_VERSION, "VERSION");
    return (all + '\n' + QJsonDocument::fromJson(request.body).toJson()).toStdString();
}

TEST_P(ProviderSessionTest, SendsOneRequestWithWhatWasConfigured)
{
    using Role = AIMessage::Role;
    using Kind = AITool::Parameter::Kind;
    const AITool tool{u"look"_s,
                      u"Looks."_s,
                      {{u"where"_s, Kind::string, u"Place."_s, true, {u"here"_s, u"there"_s}},
                       {u"times"_s, Kind::number, u"How often."_s, false, {}},
                       {u"again"_s, Kind::boolean, u"Once more."_s, true, {}}}};
    const std::vector<AIMessage> messages{
        {Role::system, u"Be kind."_s},
        {Role::assistant, {}, {{u"a"_s, u"look"_s, u"{\"at\":[1]}"_s}, {u"b"_s, u"look"_s, u"no json"_s}}},
        {Role::tool, u"seen"_s, {}, u"a"_s, u"look"_s},
        {Role::user, u"what"_s, {}, {}, {}, {u"data:image/png;base64,AA,A="_s, u"BBB="_s, u"data:none"_s}},
        {Role::user, {}, {}, {}, {}, {u"data:image/png;base64,AA=="_s}}};
    configuration.baseURLString = u"https://api.example.com/v1?tier=2"_s;
    configuration.apiKey = u" key "_s;
    configuration.temperature = 0.25;
    configuration.maxOutputTokens = 2048;
    configuration.requestTimeout = 1.5;
    configuration.purpose = u"chat"_s;
    configuration.carrying = SensitiveData::memory;
    network.asked.clear();
    session.answer(200, dialect.text("hi") + dialect.end());
    EXPECT_EQ(readReply(provider->streamReply(messages, configuration, {tool})).text(), u"hi"_s);
    EXPECT_EQ(described(session.requests().back()),
              TestData::text(dialect.isOllama ? "ai/ollama_request.txt" : "ai/chat_request.txt"));
    ASSERT_EQ(network.asked.size(), 1U);
    EXPECT_EQ(network.asked[0], std::pair(EgressFeature::aiModel, SensitiveDataSet(SensitiveData::memory)));
}

TEST_P(ProviderSessionTest, RefusesBeforeAnythingIsSent)
{
    const auto sent = session.requests().size();
    configuration.model = u" \t "_s;
    EXPECT_EQ(readReply(ask()).error, ProviderError(Plain::notConfigured));
    configuration.model = u"m"_s;
    configuration.baseURLString = u"http://api.example.com"_s;
    EXPECT_EQ(readReply(ask()).error,
              ProviderError(ProviderError::InsecureBaseURL{u"http://api.example.com"_s}));
    EXPECT_EQ(session.requests().size(), sent);
}

TEST_P(ProviderSessionTest, FollowsARedirectOnlyWhereThePersonCouldHavePointed)
{
    replyTo({.pieces = {dialect.text("x")}});
    const auto outcome = [this](const QByteArray &line) {
        const QList<QByteArray> ends = line.split(' ');
        const bool follows = session.requests().back().followsRedirect(QUrl(ends[0]), QUrl(ends[1]));
        return follows ? u"followed"_s : u"not followed"_s;
    };
    TestData::expect("ai/redirects.txt", outcome);
}

TEST_P(ProviderSessionTest, YieldsTextAsItsLinesArriveAndEndsWithTheReply)
{
    auto stream = askForOpenReply();
    const QByteArray body = dialect.text("Hel") + ": note\n\n" + dialect.text("lo");
    session.feed(body.first(20));
    TestWait::settle();
    EXPECT_EQ(stream.takeBuffered(), std::nullopt);
    session.feed(body.mid(20));
    TestWait::settle();
    EXPECT_EQ(stream.takeBuffered(), AIStreamEvent(AIStream::Text{u"Hel"_s}));
    EXPECT_EQ(stream.takeBuffered(), AIStreamEvent(AIStream::Text{u"lo"_s}));

    // The end of the reply ends the reading although the body goes on; it may not go on for long.
    session.feed(dialect.end() + dialect.text("never"));
    EXPECT_TRUE(readReply(std::move(stream)).events.empty());
    session.feed(QByteArray(4096, 'x'));
    TestWait::settle();
    EXPECT_EQ(session.openRequests(), 1);
    session.feed("x");
    TestWait::settle();
    EXPECT_EQ(session.openRequests(), 0);
    EXPECT_EQ(replyTo({.pieces = {dialect.text("tail").trimmed()}}).text(), u"tail"_s); // without a line end
}

TEST_P(ProviderSessionTest, TheTextViewHoldsTheTextTellsOfThinkingAndEndsTheRequestWithItself)
{
    const QByteArray thinking = dialect.isOllama ? R"({"message":{"thinking":"hm"}})"
                                                   "\n"
                                                 : "";
    session.answer({.pieces = {thinking + dialect.text("a"), dialect.calls("{}"), dialect.text("b")},
                    .ending = Ending::staysOpen});
    int thoughts = 0;
    std::optional texts = provider->streamText({}, configuration, [&] { ++thoughts; });
    TestWait::settle();
    EXPECT_EQ(texts->takeBuffered(), u"a"_s);
    EXPECT_EQ(texts->takeBuffered(), u"b"_s);
    EXPECT_EQ(thoughts, dialect.isOllama ? 1 : 0);
    EXPECT_EQ(session.openRequests(), 1);
    texts.reset();
    TestWait::settle();
    EXPECT_EQ(session.openRequests(), 0);
}

TEST_P(ProviderSessionTest, EachStatusHasItsErrorAndABoundOnItsBody)
{
    EXPECT_EQ(replyTo({.status = 302, .pieces = {"<html>"}}).error, ProviderError::forStatus(302));
    const QByteArray half(ProviderFailure::errorBodyLimit / 2, 'x');
    EXPECT_EQ(replyTo({.status = 500, .pieces = {half, half, half}, .ending = Ending::staysOpen}).error,
              ProviderError(ProviderError::ServerError{500}));
    EXPECT_EQ(session.openRequests(), 0);
    // A connection that breaks in an error's body changes nothing about the status.
    const auto lost = std::make_exception_ptr(TransportError(TransportError::Code::ConnectionLost, {}));
    EXPECT_EQ(replyTo({.status = 429, .bodyError = lost}).error, ProviderError(Plain::rateLimited));
}

TEST_P(ProviderSessionTest, MapsTransportErrorsBeforeAndDuringTheReply)
{
    using Code = TransportError::Code;
    const ProviderError::InvalidBaseURL badAddress{u"the configured URL"_s};
    const std::map<Code, ProviderError::Case> special{{Code::Cancelled, Plain::cancelled},
                                                      {Code::TimedOut, Plain::networkTimeout},
                                                      {Code::BadURL, badAddress},
                                                      {Code::UnsupportedURL, badAddress},
                                                      {Code::ResponseTooLarge, Plain::replyTooLarge}};
    for (int number = 0; number <= static_cast<int>(Code::Other); ++number) {
        const auto code = static_cast<Code>(number);
        const auto found = special.find(code);
        const ProviderError::Case reason = found == special.end() ? Plain::networkUnavailable : found->second;
        const auto failure = std::make_exception_ptr(TransportError(code, {}));
        EXPECT_EQ(replyTo({.sendError = failure}).error, ProviderError(reason)) << number;
        const Reply broken = replyTo({.pieces = {dialect.text("kept")}, .bodyError = failure});
        EXPECT_EQ(broken.error, ProviderError(reason)) << number;
        EXPECT_EQ(broken.text(), u"kept"_s);
    }
}

TEST_P(ProviderSessionTest, EndsWhatIsBeyondItsBounds)
{
    const QByteArray half(ReplyLines::longest / 2, 'x'); // of a line without an end
    EXPECT_EQ(replyTo({.pieces = {half, half + 'x'}, .ending = Ending::staysOpen}).error,
              ProviderError(Plain::replyTooLarge));
    EXPECT_EQ(session.openRequests(), 0);

    const auto listOf = [](int count) {
        QByteArrayList calls;
        for (int i = 0; i < count; ++i)
            calls.append("{\"index\":" + QByteArray::number(i) + R"(,"function":{"name":"f"}})");
        return calls.join(',');
    };
    EXPECT_EQ(replyTo({.pieces = {dialect.calls(listOf(256)), dialect.end()}}).error, std::nullopt);
    EXPECT_EQ(replyTo({.pieces = {dialect.calls(listOf(257))}}).error, ProviderError(Plain::tooManyCalls));
    const QByteArray longArguments =
        R"({"index":0,"function":{"name":"f","arguments":")" + QByteArray(1 << 20, 'x') + R"("}})";
    Answer endlessCall{.ending = Ending::staysOpen};
    endlessCall.pieces.assign(100, dialect.calls(longArguments));
    EXPECT_EQ(replyTo(endlessCall).error, ProviderError(Plain::replyTooLarge));
}

TEST_P(ProviderSessionTest, AReplyOutlivesItsProvider)
{
    auto stream = askForOpenReply();
    provider.reset();
    session.feed(dialect.text("still here") + dialect.end());
    session.closeBody();
    EXPECT_EQ(readReply(std::move(stream)).text(), u"still here"_s);
}

} // namespace

} // namespace morvane
