// What chat completions have of their own; what both dialects share is in ProviderSessionTest.

#include "ai/Dialects.h"
#include "support/ProcessMemory.h"
#include "support/TestData.h"

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

namespace {

const QByteArray wholeReply = R"({"choices":[{"message":{"content":"whole"},"finish_reason":"length"}]})";
const std::vector<AIStreamEvent> wholeEvents{AIStream::Text{u"whole"_s}, AIStream::TruncatedByTokenLimit{}};

class OpenAICompatibleProviderTest : public ScriptedSessionTest {
protected:
    Reply reply() { return readReply(provider.streamReply({}, configuration, {})); }
    Reply replyTo(QByteArray body)
    {
        session.answer(200, std::move(body));
        return reply();
    }

    OpenAICompatibleProvider provider{network};
};

TEST_F(OpenAICompatibleProviderTest, LeavesOutWhatIsEmptyAndReadsAWholeReply)
{
    configuration.apiKey = u""_s;
    configuration.purpose = u""_s;
    configuration.preferStreaming = false;
    EXPECT_EQ(replyTo(wholeReply).events, wholeEvents);
    EXPECT_EQ(session.requests()[0].headers.size(), 2U);
    EXPECT_EQ(lastBody().keys(), (QStringList{u"max_tokens"_s, u"messages"_s, u"model"_s, u"temperature"_s}));
    EXPECT_EQ(replyTo(R"({"choices":[{"message":{"tool_calls":[{"function":{"name":"f"}}]}}]})").events,
              (std::vector<AIStreamEvent>{AIStream::ToolCalls{{{u"call_0"_s, u"f"_s, u"{}"_s}}}}));
    EXPECT_EQ(replyTo(QByteArray(OpenAICompatibleProvider::largestBody + 1, ' ')).error,
              ProviderError(Plain::replyTooLarge));
}

TEST_F(OpenAICompatibleProviderTest, ReadsAPlainBodyAndElseAsksOnceMoreWithoutStreaming)
{
    EXPECT_EQ(replyTo(QJsonDocument::fromJson(wholeReply).toJson(QJsonDocument::Indented)).events,
              wholeEvents);
    EXPECT_EQ(session.requests().size(), 1U);
    // A call that never got its name was content all the same: no events, no second request.
    const Reply nameless = replyTo(chatCompletions.calls(R"({"index":0})") + chatCompletions.end());
    EXPECT_TRUE(nameless.events.empty());
    EXPECT_EQ(nameless.error, std::nullopt);
    EXPECT_EQ(session.requests().size(), 2U);

    session.answer(200, chatCompletions.end());
    EXPECT_EQ(replyTo(wholeReply).events, wholeEvents);
    ASSERT_EQ(session.requests().size(), 4U);
    EXPECT_TRUE(session.requests()[2].body.contains("\"stream\""));
    EXPECT_FALSE(lastBody().contains("stream"_L1));

    session.answer(200, ": padding\n");
    EXPECT_EQ(replyTo(R"({"choices":[{"message":{"content":""}}]})").error,
              ProviderError(Plain::emptyResponse));
    EXPECT_EQ(session.requests().size(), 6U);
}

TEST_F(OpenAICompatibleProviderTest, TellsTheServersWordsToThePersonAndNotToTheLog)
{
    const auto told = [this](const QByteArray &line) {
        session.answer(line.first(3).toInt(), line.mid(4));
        const ProviderError error = reply().error.value();
        return log.lines().last() + u"; "_s + error.userMessage() + u" | "_s + error.quotedWords() +
               (error.isToolRejection() ? u" | may be about the tools"_s : QString());
    };
    TestData::expect("ai/server_words.txt", told);
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

TEST_F(OpenAICompatibleProviderTest, ATrialTellsHowAReplyComesWithOneRequest)
{
    const QByteArray call = R"("tool_calls":[{"index":0,"id":"a","function":{"name":"check_connection"}}])";
    const struct {
        QByteArray body;
        std::optional<ReplyTrial> trial; // none: it fails
    } table[] = {
        {chatCompletions.text("ok") + chatCompletions.end(), ReplyTrial{true, false}},
        {R"(data: {"choices":[{"delta":{)" + call + "}}]}\n\n" + chatCompletions.end(),
         ReplyTrial{true, true}},
        {wholeReply, ReplyTrial{false, false}},
        {R"({"choices":[{"message":{)" + call + "}}]}", ReplyTrial{false, true}},
        {"data: {\"choices\":[{\"delta\":{\"reasoning\":\"hm\"}}]}\n\n" + chatCompletions.end("length"),
         ReplyTrial{true, false}},
        {chatCompletions.end(), std::nullopt},
    };
    for (const auto &[body, trial] : table) {
        const std::size_t before = session.requests().size();
        session.answer(200, body);
        const auto outcome = TestWait::begin(provider.tryReply(configuration, {provider.testTool()}, {}));
        TestWait::until([&] { return outcome->done; });
        EXPECT_EQ(outcome->value, trial) << body.constData();
        EXPECT_EQ(session.requests().size(), before + 1);
        EXPECT_EQ(lastBody()["tools"_L1][0]["function"_L1]["name"_L1].toString(), u"check_connection"_s);
    }
}

} // namespace

} // namespace morvane
