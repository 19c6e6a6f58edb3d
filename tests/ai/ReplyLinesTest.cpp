// What single texts come to: lines and bodies of a reply in both dialects, lists of models, and addresses.

#include "ai/contract/BaseURL.h"
#include "ai/contract/ProviderError.h"
#include "ai/providers/LineSplitter.h"
#include "ai/providers/OllamaChunk.h"
#include "ai/providers/OpenAIStreamParser.h"
#include "ai/providers/ServerModels.h"
#include "ai/providers/ToolCallAccumulator.h"
#include "async/Work.h"
#include "support/Await.h"
#include "support/FakeHttpSession.h"
#include "support/ManualClock.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace OpenAIStreamParser;

namespace {

QString described(const std::optional<QString> &text)
{
    return text ? u'“' + *text + u'”' : u"none"_s;
}

QString described(const std::vector<AIToolCall> &calls)
{
    QString all;
    for (const AIToolCall &call : calls)
        all += u" call id “%1” name “%2” arguments “%3”;"_s.arg(call.id, call.name, call.argumentsJSON);
    return all;
}

QString described(const ToolAwareEvent &event)
{
    if (const auto *delta = std::get_if<Delta>(&event))
        return u"text “"_s + delta->text + u'”';
    if (const auto *part = std::get_if<ToolCallFragment>(&event))
        return u"part of call %1: id %2, name %3, arguments “%4”"_s.arg(part->index)
            .arg(described(part->id), described(part->name), part->arguments);
    if (const auto *finished = std::get_if<Finished>(&event))
        return u"finished: "_s + finished->reason;
    if (const auto *failed = std::get_if<Failed>(&event))
        return u"failed: %1 “%2”"_s.arg(failed->status).arg(failed->serverWords);
    if (std::holds_alternative<Reasoned>(event))
        return u"reasoned"_s;
    return std::holds_alternative<Done>(event) ? u"done"_s : u"ignored"_s;
}

QString classified(const QByteArray &line)
{
    QStringList all;
    for (const ToolAwareEvent &event : classify(line))
        all += described(event);
    return all.join(u"; ");
}

QString parsedBody(const QByteArray &body)
{
    try {
        const Completion whole = parseBody(body);
        return u"text “"_s + whole.text + u"”;"_s + described(whole.toolCalls) + u" finished "_s +
               described(whole.finishReason);
    } catch (const ProviderError &error) {
        return error.is(ProviderError::Plain::malformedResponse) ? u"malformed"_s : error.userMessage();
    }
}

QString chunk(const QByteArray &line)
{
    const auto read = OllamaChunk::parse(line);
    if (!read)
        return u"none"_s;
    return u"text “"_s + read->text + u"”;"_s + described(read->toolCalls) +
           (read->isThinking ? u" thinking;"_s : QString()) + (read->done ? u" done "_s : u" goes on "_s) +
           described(read->doneReason) + u"; error "_s + described(read->errorMessage);
}

QString modelNames(const QByteArray &body)
{
    const auto names = ServerModels::parse(body);
    return names ? u'[' + names->join(u", ") + u']' : u"no list"_s;
}

TEST(ReplyLinesTest, SayWhatTheyHold)
{
    TestData::expect("ai/chat_lines.txt", classified);
    TestData::expect("ai/chat_bodies.txt", parsedBody);
    TestData::expect("ai/ollama_lines.txt", chunk);
    TestData::expect("ai/model_lists.txt", modelNames);
}

// The chat-completions address, or why there is none; an error names the text as it was given.
QString endpoint(const QByteArray &line)
{
    const QString given = QString::fromUtf8(line);
    try {
        return BaseURL::chatCompletions(given).toString(QUrl::FullyEncoded);
    } catch (const ProviderError &error) {
        if (error.reason() == ProviderError::Case(ProviderError::InvalidBaseURL{given}))
            return u"invalid"_s;
        if (error.reason() == ProviderError::Case(ProviderError::InsecureBaseURL{given}))
            return u"insecure"_s;
        return u"another error"_s;
    }
}

TEST(BaseURLTest, EachLeadsToItsEndpointOrIsRefused)
{
    TestData::expect("ai/base_urls.txt", endpoint);
}

TEST(ServerModelsTest, TellsOfSoManyModelsAndNoMore)
{
    QByteArray many = R"({"data":[)";
    for (int i = 0; i < 12'000; ++i)
        many += "{\"id\":\"m" + QByteArray::number(i) + "\"},";
    EXPECT_EQ(ServerModels::parse(many + R"({"id":"z"}]})")->size(), ServerModels::mostNames);
}

TEST(ServerModelsTest, AsksBesideTheEndpointWithARedirectRuleALimitAndWordsOfItsOwn)
{
    FakeHttpSessionProvider network;
    ManualClock clock;
    Work work(clock);
    AIConfiguration configuration;
    configuration.baseURLString = u"https://a.example/b%2Fc/v1/chat/completions?tier=2"_s;
    configuration.apiKey = u"secret"_s;
    const auto outcome = [&](int status, const QByteArray &body) {
        network.fake->answer(status, body);
        try {
            return TestWait::await(ServerModels::list(&network, &work, configuration, {})).join(u' ');
        } catch (const UserPresentableError &error) {
            return error.userMessage();
        }
    };
    EXPECT_EQ(outcome(200, R"([{"id":"m"}])"), u"m"_s);
    const HttpRequest &asked = network.fake->requests().back();
    EXPECT_EQ(asked.url.toEncoded(), "https://a.example/b%2Fc/v1/models?tier=2");
    EXPECT_EQ(asked.headers[0].value, "MorvaneGPT/" MORVANE_VERSION);
    EXPECT_EQ(asked.headers.at(1).value, "Bearer secret");
    EXPECT_EQ(asked.limit, asked.timeout) << "a slow drip ends as well";
    ASSERT_TRUE(asked.followsRedirect);
    EXPECT_FALSE(asked.followsRedirect(asked.url, QUrl(u"http://a.example/v1/models"_s)));
    const QByteArray large(ServerModels::largestBody - 2, ' ');
    EXPECT_EQ(outcome(200, "[] " + large), u"The server's list of models is too large to read."_s);
    EXPECT_EQ(outcome(404, {}), u"The server gave no list of its models (HTTP 404)."_s);
    EXPECT_EQ(outcome(401, {}), u"The AI provider rejected the API key."_s);
    const auto sent = network.fake->requests().size();
    configuration.baseURLString = u"http://example.org/v1"_s; // not encrypted, not near
    outcome(200, "[]");
    EXPECT_EQ(network.fake->requests().size(), sent);
}

QString linesInPieces(const QByteArray &body, qsizetype size)
{
    LineSplitter splitter(30);
    QStringList lines;
    try {
        for (qsizetype at = 0; at < body.size(); at += size) {
            splitter.add(body.mid(at, size));
            while (const auto line = splitter.next())
                lines.append(QString::fromUtf8(*line));
        }
    } catch (const ProviderError &) {
        return u"too long"_s;
    }
    if (const auto line = splitter.last())
        lines.append(QString::fromUtf8(*line));
    return lines.join(u'|');
}

// Wherever the pieces break, inside a CR LF too, the lines are the same.
QString splitLines(const QByteArray &body)
{
    const QString lines = linesInPieces(body, 1);
    for (qsizetype size = 2; size <= body.size(); ++size)
        EXPECT_EQ(linesInPieces(body, size), lines) << "pieces of " << size;
    return lines;
}

TEST(LineSplitterTest, CutsAtEveryLineEndAndAtNothingElse)
{
    TestData::expect("ai/line_ends.txt", splitLines);
}

TEST(ToolCallAccumulatorTest, PutsFragmentsTogether)
{
    ToolCallAccumulator accumulator;
    accumulator.add({1, u"first"_s, u"f"_s, u" {\"a\":"_s});
    accumulator.add({0, {}, u"g"_s, u" \n"_s});
    accumulator.add({1, u""_s, u""_s, u"1} "_s});
    accumulator.add({1, u"second"_s, {}, {}});
    accumulator.add({7, u"nameless"_s, u""_s, u"{}"_s});
    const std::vector<AIToolCall> expected{{u"second"_s, u"f"_s, u"{\"a\":1}"_s},
                                           {u"call_0"_s, u"g"_s, u"{}"_s}};
    EXPECT_EQ(accumulator.finish(), expected);
}

} // namespace

} // namespace morvane
