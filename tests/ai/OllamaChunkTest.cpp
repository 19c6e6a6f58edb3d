#include "ai/providers/OllamaChunk.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

OllamaChunk text(const QString &words)
{
    OllamaChunk chunk;
    chunk.text = words;
    return chunk;
}

OllamaChunk calls(std::vector<AIToolCall> list)
{
    OllamaChunk chunk;
    chunk.toolCalls = std::move(list);
    return chunk;
}

TEST(OllamaChunkTest, ReadsWhatALineHolds)
{
    OllamaChunk thought;
    thought.isThinking = true;
    OllamaChunk both = text(u"so"_s);
    both.isThinking = true;
    OllamaChunk last;
    last.done = true;
    last.doneReason = u"length"_s;
    OllamaChunk error;
    error.errorMessage = u"out of memory"_s;
    const struct {
        QByteArray line;
        OllamaChunk expected;
    } cases[] = {
        {" \t{\"message\":{\"content\":\"hi \"},\"done\":false}\r", text(u"hi "_s)},
        {R"({"message":{"content":"","thinking":"hm"}})", thought},
        {R"({"message":{"content":"so","thinking":"hm"}})", both},
        {R"({"message":{"content":"x","thinking":""}})", text(u"x"_s)},
        {R"({"message":{"content":""},"done":true,"done_reason":"length","eval_count":3})", last},
        {R"({"error":"out of memory"})", error},
        {R"({"error":"","message":{"content":"fine"}})", text(u"fine"_s)},
        {"{\"message\":{\"content\":\"a\xff\"}}", text(u"a\uFFFD"_s)},
        // Another type than the interface's own reads as absent.
        {R"({"message":{"content":7,"thinking":true,"tool_calls":{}},"done":"yes","done_reason":1,"error":{}})",
         {}},
        {R"({"message":"words"})", {}},
        {R"({})", {}},
    };
    for (const auto &[line, expected] : cases)
        EXPECT_EQ(OllamaChunk::parse(line), expected) << line.toStdString();
}

TEST(OllamaChunkTest, ReadsCallsWithArgumentsAsJSONText)
{
    const struct {
        QByteArray list;
        std::vector<AIToolCall> expected;
    } cases[] = {
        {R"([{"function":{"name":"f","arguments":{"a":"b","n":9007199254740993}}}])",
         {{{}, u"f"_s, u"{\"a\":\"b\",\"n\":9007199254740993}"_s}}},
        {R"([{"id":"x","function":{"name":"f","arguments":{}}},{"function":{"name":"g"}}])",
         {{u"x"_s, u"f"_s, u"{}"_s}, {{}, u"g"_s, u"{}"_s}}},
        {R"([{"function":{"name":"f","arguments":" {\"a\":1} "}}])", {{{}, u"f"_s, u"{\"a\":1}"_s}}},
        {R"([1,null,{"function":{}},{"function":{"name":""}},{"function":{"name":"f","arguments":3}}])",
         {{{}, u"f"_s, u"{}"_s}}},
    };
    for (const auto &[list, expected] : cases)
        EXPECT_EQ(OllamaChunk::parse(R"({"message":{"tool_calls":)" + list + "}}"), calls(expected))
            << list.toStdString();
}

TEST(OllamaChunkTest, SkipsWhatIsNoObject)
{
    for (const QByteArray line : {"", "  ", "data: {}", "[{}]", "\"text\"", "{\"done\":tr", "{} {}"})
        EXPECT_EQ(OllamaChunk::parse(line), std::nullopt) << line.toStdString();
}

} // namespace

} // namespace morvane
