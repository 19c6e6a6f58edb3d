#include "ai/routing/ContextBuilder.h"

#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Item = ContextBuilder::HistoryItem;

// A history of so many messages, the person's first, named by their numbers.
std::vector<Item> history(int count)
{
    std::vector<Item> items;
    for (int i = 0; i < count; ++i)
        items.push_back({i % 2 == 0 ? MessageRole::user : MessageRole::assistant, QString::number(i), {}});
    return items;
}

// One line for each message: its role, its words, and how many pictures it has.
QStringList lines(const std::vector<AIMessage> &messages)
{
    QStringList all;
    for (const AIMessage &message : messages)
        all.append(rawText(message.role) + u": "_s + message.content +
                   QString(message.imageDataURLs.size(), u'*'));
    return all;
}

TEST(ContextBuilderTest, KeepsTheNewestAndSaysWhatWasCut)
{
    const char *table = "ai/kept_messages.txt";
    const auto outcome = [](const QByteArray &line) {
        const QByteArrayList numbers = line.split(' ');
        return lines(ContextBuilder::build(history(numbers[0].toInt()), numbers[1].toLongLong(),
                                           u"Be kind."_s, std::nullopt))
            .join(u" | ");
    };
    EXPECT_EQ(TestData::transcript(table, outcome), TestData::text(table));
}

TEST(ContextBuilderTest, PicturesStayWithTheirMessageAndASummaryStandsInForTheNote)
{
    std::vector<Item> items = history(5);
    items[0].images = {u"data:cut"_s};
    items[4].images = {u"data:a"_s, u"data:b"_s};
    const auto messages = ContextBuilder::build(items, 4, {}, u"They spoke of tea."_s);
    EXPECT_EQ(
        messages.at(1).content,
        u"Context from earlier in this conversation (1 older messages not shown): They spoke of tea."_s);
    EXPECT_EQ(messages.back().imageDataURLs, items[4].images);
    EXPECT_EQ(lines(messages).join(u' ').count(u'*'), 2);
}

// A quote is one line of 140 characters, which are what a person counts: a family or an accented letter is
// one.
TEST(ContextBuilderTest, AQuoteIsCutByCharacters)
{
    const auto quoted = [](const QString &words) {
        const QString start = u"The conversation began with the user asking: “"_s;
        const QString sentence = ContextBuilder::digest({{MessageRole::user, words, {}}});
        EXPECT_TRUE(sentence.startsWith(start) && sentence.endsWith(u'”'));
        return sentence.mid(start.size()).chopped(1);
    };
    for (const QString &character : {u"x"_s, u"e\u0301"_s, u"👨‍👩‍👧"_s, u"👻"_s}) {
        EXPECT_EQ(quoted(character.repeated(140)), character.repeated(140));
        EXPECT_EQ(quoted(character.repeated(141)), character.repeated(140) + u'…');
    }
    EXPECT_EQ(quoted(u" \none\ntwo\r\n"_s), u"one two"_s);
    EXPECT_EQ(quoted(u"x"_s.repeated(140) + u"\n \n"_s), u"x"_s.repeated(140));
}

} // namespace

} // namespace morvane
