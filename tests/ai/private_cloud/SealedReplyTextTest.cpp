#include "ai/private_cloud/ThinkingFilter.h"
#include "ai/private_cloud/ToolBlock.h"
#include "ai/private_cloud/ToolBlockScanner.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// A reply's text on its way from the opened pieces to what is shown.
struct Reading {
    explicit Reading(bool serverSendsReasoning = false)
    {
        if (serverSendsReasoning)
            filter.noteServerSendsReasoning();
    }

    QString take(const QString &piece)
    {
        const QString now = scanner.append(filter.accept(piece));
        shown += now;
        return now;
    }

    QString end()
    {
        shown += scanner.append(filter.flush());
        shown += scanner.flush();
        QString outcome = shown;
        if (filter.droppedThinking())
            outcome += u" (dropped)"_s;
        for (const AIToolCall &call : ToolBlock::parseToolCalls(scanner.block(), u"id"_s)) {
            if (scanner.sawMarker())
                outcome += u" ["_s + call.id + u' ' + call.name + u' ' + call.argumentsJSON + u']';
        }
        return outcome;
    }

    ThinkingFilter filter;
    ToolBlockScanner scanner;
    QString shown;
};

QString readIn(const std::vector<QString> &pieces)
{
    Reading reading;
    for (const QString &piece : pieces)
        reading.take(piece);
    return reading.end();
}

TEST(SealedReplyText, IsTheSameWhereverThePiecesAreCut)
{
    const std::string now = TestData::transcript("ai/private_cloud/replies.txt", [](const QByteArray &input) {
        const QString reply = QString::fromUtf8(input);
        const QString whole = readIn({reply});
        for (qsizetype cut = 1; cut < reply.size(); ++cut)
            EXPECT_EQ(readIn({reply.first(cut), reply.sliced(cut)}), whole) << cut;
        std::vector<QString> single;
        for (const QChar character : reply)
            single.emplace_back(character);
        EXPECT_EQ(readIn(single), whole);
        return whole;
    });
    EXPECT_EQ(now, TestData::text("ai/private_cloud/replies.txt"));
}

TEST(SealedReplyText, HoldsNoMoreThanItMust)
{
    const QString held = QString(599, u'a');
    Reading undecided;
    EXPECT_EQ(undecided.take(held), QString());
    EXPECT_EQ(undecided.take(u"b"_s).size(), 600 - 23); // the rest may begin a marker
    EXPECT_EQ(undecided.end(), held + u'b');

    Reading ended;
    ended.take(held);
    EXPECT_EQ(ended.end(), held);

    Reading reasoned(true);
    EXPECT_EQ(reasoned.take(u" \n<thi"_s), QString());
    EXPECT_EQ(reasoned.take(u"s is an answer of some length"_s), u" \n<this is a"_s);

    Reading late; // reasoning came in its own field after all
    late.take(u"An answer that was held back "_s);
    late.filter.noteServerSendsReasoning();
    EXPECT_EQ(late.take(u"goes out."_s), u"An answer that "_s);
}

} // namespace

} // namespace morvane
