// What chat completions have of their own; what both dialects share is in ProviderSessionTest.

#include "ai/Dialects.h"
#include "support/FakeHttpSession.h"
#include "support/LogCapture.h"
#include "support/ProcessMemory.h"
#include "support/TestData.h"

#include <QJsonDocument>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = ProviderError::Plain;

namespace {

const QByteArray wholeReply = R"({"choices":[{"message":{"content":"whole"},"finish_reason":"length"}]})";
const std::vector<AIStreamEvent> wholeEvents{AIStream::Text{u"whole"_s}, AIStream::TruncatedByTokenLimit{}};

class OpenAICompatibleProviderTest : public testing::Test {
protected:
    Reply reply() { return readReply(provider.streamReply({}, configuration, {})); }
    Reply replyTo(QByteArray body)
    {
        session.answer(200, std::move(body));
        return reply();
    }
    QJsonObject sentBody(std::size_t request = 0) const
    {
        return QJsonDocument::fromJson(session.requests().at(request).body).object();
    }

    AIConfiguration configuration = [] {
        AIConfiguration c;
        c.baseURLString = u"https://api.example.com/v1"_s;
        c.model = u" some-model\t"_s;
        return c;
    }();
    FakeHttpSessionProvider network;
    FakeHttpSession &session = *network.fake;
    OpenAICompatibleProvider provider{network};
    LogCapture log;
};

TEST_F(OpenAICompatibleProviderTest, LeavesOutWhatIsEmptyAndUsesAnInjectedSession)
{
    configuration.apiKey = u""_s;
    configuration.purpose = u""_s;
    configuration.preferStreaming = false;
    const auto injected = std::make_shared<FakeHttpSession>();
    injected->answer(200, wholeReply);
    OpenAICompatibleProvider own(network, injected);
    EXPECT_EQ(readReply(own.streamReply({}, configuration, {})).events, wholeEvents);
    EXPECT_TRUE(network.asked.empty());
    EXPECT_EQ(injected->requests()[0].headers.size(), 2U);
    EXPECT_EQ(QJsonDocument::fromJson(injected->requests()[0].body).object().keys(),
              (QStringList{u"max_tokens"_s, u"messages"_s, u"model"_s, u"temperature"_s}));
    injected->answer(200, R"({"choices":[{"message":{"tool_calls":[{"function":{"name":"f"}}]}}]})");
    EXPECT_EQ(readReply(own.streamReply({}, configuration, {})).events,
              (std::vector<AIStreamEvent>{AIStream::ToolCalls{{{u"call_0"_s, u"f"_s, u"{}"_s}}}}));
    injected->answer(200, QByteArray(OpenAICompatibleProvider::largestBody + 1, ' '));
    EXPECT_EQ(readReply(own.streamReply({}, configuration, {})).error, ProviderError(Plain::replyTooLarge));
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
    EXPECT_TRUE(sentBody(2).contains("stream"_L1));
    EXPECT_FALSE(sentBody(3).contains("stream"_L1));

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
        {R"(data: {"choices":[{"delta":{"reasoning":"hm"}}]})"
         "\n\n" +
             chatCompletions.end("length"),
         ReplyTrial{true, false}},
        {chatCompletions.end(), std::nullopt},
    };
    for (const auto &[body, trial] : table) {
        const std::size_t before = session.requests().size();
        session.answer(200, body);
        std::optional<ReplyTrial> came;
        try {
            came = TestWait::await(provider.tryReply(configuration, {provider.testTool()}, {}));
        } catch (const ProviderError &) {
        }
        EXPECT_EQ(came, trial) << body.constData();
        EXPECT_EQ(session.requests().size(), before + 1);
        EXPECT_EQ(sentBody()["tools"_L1][0]["function"_L1]["name"_L1].toString(), u"check_connection"_s);
    }
}

} // namespace

} // namespace morvane
