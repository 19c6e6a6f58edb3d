#include "ai/providers/OpenAIStreamParser.h"

#include "ai/contract/ProviderError.h"
#include "ai/providers/ToolCallAccumulator.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;
using namespace OpenAIStreamParser;

namespace {

struct Line {
    const char *bytes;
    std::vector<ToolAwareEvent> events;
};

void expectEvents(const std::vector<Line> &lines)
{
    for (const Line &line : lines)
        EXPECT_EQ(classify(line.bytes), line.events) << line.bytes;
}

const std::vector<ToolAwareEvent> ignored{Ignored{}};
const std::vector<ToolAwareEvent> done{Done{}};

TEST(ClassifyTest, KnowsTheSentinelAndIgnoresWhatIsNoEvent)
{
    expectEvents({Line{"", ignored},
                  Line{": keep-alive", ignored},
                  Line{"event: message", ignored},
                  Line{"data", ignored},
                  Line{"Data: [DONE]", ignored},
                  Line{"data: [done]", ignored},
                  Line{"data: [DONE]", done},
                  Line{"data:[DONE]", done},
                  Line{" \tdata: \t [DONE] \t", done},
                  Line{"\xef\xbb\xbf"
                       "data: [DONE]",
                       ignored},
                  Line{"data:", ignored},
                  Line{"data: {", ignored},
                  Line{"data: [1]", ignored},
                  Line{"data: 7", ignored},
                  Line{"data: {}", ignored},
                  Line{R"(data: {"choices":[]})", ignored},
                  Line{R"(data: {"choices":{}})", ignored},
                  Line{R"(data: {"choices":[null]})", ignored},
                  Line{R"(data: {"choices":[{"delta":{"content":"x"}},1]})", ignored},
                  Line{R"(data: {"choices":[{"delta":{"content":"x"}}]} x)", ignored},
                  Line{R"(data:{"choices":[{"delta":{"content":"x"}},{}]})", {Delta{u"x"_s}}}});
}

TEST(ClassifyTest, FindsTextInTheDeltaOrTheMessage)
{
    expectEvents(
        {Line{R"(data: {"choices":[{"delta":{"content":" a\u00e9👻\n"}}]})", {Delta{u" aé👻\n"_s}}},
         Line{R"(data: {"choices":[{"delta":{"content":""}}]})", ignored},
         Line{R"(data: {"choices":[{"delta":{"content":7}}]})", ignored},
         Line{R"(data: {"choices":[{"message":{"content":"m"}}]})", {Delta{u"m"_s}}},
         Line{R"(data: {"choices":[{"delta":{"content":null},"message":{"content":"m"}}]})", {Delta{u"m"_s}}},
         Line{R"(data: {"choices":[{"delta":{"content":""},"message":{"content":"m"}}]})", ignored},
         Line{R"(data: {"choices":[{"delta":"x","message":{"content":"m"}}]})", {Delta{u"m"_s}}},
         Line{R"(data: {"choices":[{"delta":{"reasoning_content":"hm"}}]})", ignored},
         Line{"data: {\"choices\":[{\"delta\":{\"content\":\"10 \xff\"}}]}", {Delta{u"10 \ufffd"_s}}},
         Line{R"(data: {"choices":[{"delta":{"content":"x"},"finish_reason":"length"}]})",
              {Delta{u"x"_s}, Finished{u"length"_s}}},
         Line{R"(data: {"choices":[{"delta":{},"finish_reason":null}]})", ignored}});
}

TEST(ClassifyTest, FindsFragmentsAndHidesThoseOfAMessageBehindADelta)
{
    expectEvents(
        {Line{R"(data: {"choices":[{"delta":{"content":"x","tool_calls":[
                {"index":3,"id":"a","function":{"name":"f","arguments":"{"}},{}]},"finish_reason":"tool_calls"}]})",
              {Delta{u"x"_s}, ToolCallFragment{3, u"a"_s, u"f"_s, u"{"_s}, ToolCallFragment{1, {}, {}, {}},
               Finished{u"tool_calls"_s}}},
         Line{R"(data: {"choices":[{"delta":{"tool_calls":[{"index":"2","id":5,"function":7}]}}]})",
              {ToolCallFragment{0, {}, {}, {}}}},
         Line{R"(data: {"choices":[{"delta":{"tool_calls":[{"index":0},4]}}]})", ignored},
         Line{R"(data: {"choices":[{"message":{"tool_calls":[{"id":"m"}]}}]})",
              {ToolCallFragment{0, u"m"_s, {}, {}}}},
         // A delta hides the calls of a message beside it, while text falls through.
         Line{R"(data: {"choices":[{"delta":{},"message":{"content":"m","tool_calls":[{"id":"m"}]}}]})",
              {Delta{u"m"_s}}}});
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

TEST(ToolCallAccumulatorTest, EndsAStreamOfCallsWithoutEnd)
{
    ToolCallAccumulator manyCalls;
    EXPECT_THROW(
        {
            for (int index = 0; index < 1'000'000; ++index)
                manyCalls.add({index, {}, {}, {}});
        },
        ProviderError);
    ToolCallAccumulator longCall;
    const QString part(1024 * 1024, u'x');
    EXPECT_THROW(
        {
            for (int i = 0; i < 100; ++i)
                longCall.add({0, {}, {}, part});
        },
        ProviderError);
}

std::optional<Completion> parsed(const char *body)
{
    try {
        return parseBody(body);
    } catch (const ProviderError &error) {
        EXPECT_TRUE(error.is(ProviderError::Plain::malformedResponse));
        return std::nullopt;
    }
}

TEST(ParseBodyTest, ReadsTextCallsAndReason)
{
    EXPECT_EQ(parsed(R"({"choices":[{"message":{"content":"hi"},"finish_reason":"length"},{}]})"),
              (Completion{u"hi"_s, {}, u"length"_s}));
    EXPECT_EQ(parsed(R"({"choices":[{"message":{"content":"","finish_reason":"length"}}]})"), Completion{});
    // Positions of skipped entries count; ids and arguments stay as they were sent.
    EXPECT_EQ(
        parsed(R"({"choices":[{"message":{"content":null,"tool_calls":[
                  {"function":{"arguments":"{}"}}, {"id":"x","function":"f"},
                  {"function":{"name":"a","arguments":""}}, {"id":"","function":{"name":"b","arguments":" "}},
                  {"id":4,"function":{"name":"","arguments":{"k":1}}}]}}]})"),
        (Completion{{},
                    {{u"call_2"_s, u"a"_s, u"{}"_s}, {u""_s, u"b"_s, u" "_s}, {u"call_4"_s, u""_s, u"{}"_s}},
                    {}}));
}

TEST(ParseBodyTest, RefusesWhatIsNoReply)
{
    for (const char *body :
         {"", "{", "[]", "{}", R"({"choices":[]})", R"({"choices":[1]})", R"({"choices":{}})",
          R"({"choices":[{}]})", R"({"choices":[{"message":"x"}]})", R"({"choices":[{"message":{}}]})",
          R"({"choices":[{"message":{"content":null}}]})",
          R"({"choices":[{"message":{"tool_calls":[{"function":{}}]}}]})",
          "{\"choices\":[{\"message\":{\"content\":\"\xff\"}}]}"})
        EXPECT_EQ(parsed(body), std::nullopt) << body;
}

} // namespace

} // namespace morvane
