#include "ai/private_cloud/SealedTurnFixture.h"

namespace morvane {

TEST_F(SealedTurnTest, ReadsWhatIsSealedAndDropsTheRest)
{
    const ProviderError changed(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud could not be decrypted"_s + ending});
    const ProviderError plain(ProviderError::EnclaveUnverified{
        u"A reply from the private cloud did not arrive encrypted"_s + ending});
    const QString dropped = u"Venice reply carried 1 unsealed chunks; they were dropped"_s;
    const QString hex = u"p"_s + u"a"_s.repeated(185);
    const QString answer = u"word "_s.repeated(130); // more than is held back
    const struct {
        const char *name;
        QStringList lines;
        QString shown; // T thinking, and the texts
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
        {"both fields of reasoning", {u"ra"_s, u"ob"_s, u"sanswer"_s, u"oc"_s}, u"Tanswer"_s, {}, {}},
        {"reasoning behind the text", {u"s"_s + answer, u"rlate"_s}, answer, {}, {}},
    };
    for (const auto &one : cases) {
        SCOPED_TRACE(one.name);
        cloud.lines = one.lines;
        const Reply reply = readReply(start());
        QString shown;
        for (const AIStreamEvent &event : reply.events) {
            if (const auto *text = std::get_if<AIStream::Text>(&event))
                shown += text->piece;
            else if (std::holds_alternative<AIStream::Thinking>(event))
                shown += u'T';
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
