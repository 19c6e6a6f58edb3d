#include "ai/private_cloud/SealedTurnFixture.h"

namespace morvane {

TEST_F(SealedTurnTest, ReadsWhatIsSealedAndDropsTheRest)
{
    using Plain = ProviderError::Plain;
    const ProviderError changed(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud could not be decrypted"_s + ending});
    const ProviderError plain(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud did not arrive encrypted"_s + ending});
    const QString dropped = u"Venice reply carried 1 unsealed chunks; they were dropped"_s;
    const QString length = u"data: {\"choices\":[{\"delta\":{},\"finish_reason\":\"length\"}]}"_s;
    const QString hex = u"p"_s + u"a"_s.repeated(185);
    const QString answer = u"word "_s.repeated(130); // more than is held back
    const struct {
        const char *name;
        QStringList lines;
        QString shown; // T thinking, L the limit, calls by name, the texts
        std::optional<ProviderError> error;
        QString log;
    } cases[] = {
        {"one plain among sealed", {u"sa"_s, u"pb"_s, u"sc"_s}, u"ac"_s, {}, dropped},
        {"only plain",
         {u"pb"_s, u"pc"_s},
         {},
         plain,
         u"Venice reply carried 2 unsealed chunks and nothing sealed"_s},
        {"185 digits", {hex, u"sa"_s}, u"a"_s, {}, dropped},
        {"186 digits", {hex + u"a"_s}, {}, changed, u"Venice reply chunk did not decrypt"_s},
        {"no digit among many", {hex + u"ag"_s, u"sa"_s}, u"a"_s, {}, dropped},
        {"changed", {u"sa"_s, u"xb"_s, u"sc"_s}, u""_s, changed, u"Venice reply chunk did not decrypt"_s},
        {"nothing",
         {u": comment"_s, u"data: {"_s, u"data: []"_s},
         {},
         ProviderError(Plain::emptyResponse),
         {}},
        {"only reasoning", {u"rthought"_s, length}, u"T"_s, ProviderError(Plain::emptyResponse), {}},
        {"both fields of reasoning", {u"ra"_s, u"ob"_s, u"sanswer"_s, u"oc"_s}, u"Tanswer"_s, {}, {}},
        {"reasoning behind the text", {u"s"_s + answer, u"rlate"_s}, answer, {}, {}},
        {"thinking in the text", {u"s <think>a"_s, u"sb</thi"_s, u"snk>\nanswer"_s}, u"answer"_s, {}, {}},
        {"without its opening tag",
         {u"sabc</think> x"_s},
         u"x"_s,
         {},
         u"Venice reply carried thinking inside the answer with no opening tag; it was dropped"_s},
        {"the limit", {u"sa"_s, length}, u"aL"_s, {}, {}},
        {"no call in a block",
         {u"sText<<<MORVANE_TOOL"_s, u"s_CALLS>>>{}"_s},
         u"Text"_s,
         {},
         u"Venice tool block did not parse"_s},
        {"a call",
         {u"rlong"_s, u"s<<<MORVANE_TOOL_CALLS>>>{\"calls\":[{\"name\":\"f\"}]}"_s,
          u"s<<<END_MORVANE_TOOL_CALLS>>> behind"_s},
         u"T[f]"_s,
         {},
         {}},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.name);
        cloud.lines = one.lines;
        const Reply reply = readReply(start());
        QString shown;
        for (const AIStreamEvent &event : reply.events) {
            if (const auto *text = std::get_if<AIStream::Text>(&event))
                shown += text->piece;
            else if (const auto *calls = std::get_if<AIStream::ToolCalls>(&event))
                shown += u'[' + calls->calls[0].name + u']';
            else if (std::holds_alternative<AIStream::Thinking>(event))
                shown += u'T';
            else if (std::holds_alternative<AIStream::TruncatedByTokenLimit>(event))
                shown += u'L';
        }
        EXPECT_EQ(shown, one.shown);
        EXPECT_EQ(reply.error, one.error);
        EXPECT_TRUE(one.log.isEmpty() || said(one.log));
    }
}

TEST_F(SealedTurnTest, BoundsWhatAServerMaySend)
{
    cloud.lines = {u"sText<<<MORVANE_TOOL_CALLS>>>"_s};
    for (int i = 0; i < 9; ++i)
        cloud.lines += u"s"_s + u"x"_s.repeated(500'000);
    EXPECT_EQ(readReply(start()).error, ProviderError(ProviderError::Plain::replyTooLarge));
    cloud.lines = {u"sa"_s, u"data: "_s + u"x"_s.repeated(3'000'000)};
    EXPECT_EQ(readReply(start()).error, ProviderError(ProviderError::Plain::replyTooLarge));
}

} // namespace morvane
