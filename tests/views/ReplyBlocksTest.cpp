#include "WindowFixture.h"

#include "view_models/ShellViewModel.h"

#include <QAccessible>
#include <QQuickTextDocument>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace morvane {

using namespace Qt::StringLiterals;

class ReplyBlocksTest : public WindowFixture {
protected:
    [[nodiscard]] QQuickItem *drawn(const QString &name) const { return WindowDriver::item(m_window, name); }
    // The items that draw the blocks of the only reply, in order.
    [[nodiscard]] QList<QQuickItem *> blocks() const
    {
        QList<QQuickItem *> found;
        for (QQuickItem *child : drawn(u"replyBlocks"_s)->childItems()) {
            if (child->property("content").isValid())
                found += child;
        }
        return found;
    }
};

TEST_F(ReplyBlocksTest, EachKindOfBlockIsDrawnAndSaysItsWords)
{
    const struct {
        QString text;
        QString name;
        QString said; // as name or description
    } cases[] = {
        {u"Some **words**"_s, u"paragraph"_s, u"Some words"_s},
        {u"## Head"_s, u"heading"_s, u"Head"_s},
        {u"- a\n- b"_s, u"list"_s, u"• b"_s},
        {u"1. a\n1. b"_s, u"list"_s, u"2. b"_s},
        {u"> said"_s, u"quote"_s, {}},
        {u"```cpp\nint i;\n```"_s, u"code"_s, {}},
        {u"|a|b|\n|-|-|\n|1|2|"_s, u"table"_s, {}},
        {u"```stat\n7 | Days | +1"_s, u"stats"_s, u"Days: 7 +1"_s},
        {u"```facts\nBuilt | 2004"_s, u"facts"_s, u"Built: 2004"_s},
        {u"```compare\nA | B\nx | 1 | 2"_s, u"comparison"_s, {}},
        {u"```timeline\n2019 | Listed\n2020 | Sold"_s, u"timeline"_s, u"2020: Sold"_s},
        {u"```chart\ntitle: T\na | 1\nb | 2"_s, u"chart"_s, u"b: 2"_s},
        {u"```market\nGold | 2 | -1%"_s, u"market"_s, u"Gold: 2 -1%"_s},
        {u"```weather\ncondition: Sun\nhigh: 3"_s, u"weather"_s, u"High: 3"_s},
        {u"---"_s, u"divider"_s, u"Divider"_s},
    };
    for (const auto &each : cases) {
        showReply(each.text);
        QQuickItem *block = drawn(each.name);
        ASSERT_NE(block, nullptr) << each.text.toStdString();
        EXPECT_GT(block->height(), 5) << each.name.toStdString();
        EXPECT_GT(block->width(), 300) << each.name.toStdString();
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(block);
        const QString said =
            face ? face->text(QAccessible::Name) + face->text(QAccessible::Description) : QString();
        EXPECT_TRUE(said.contains(each.said)) << each.name.toStdString() << ": " << said.toStdString();
    }
    showReply(u"```cpp\nint i;\n```\n|a|b|\n|-|-|\n|1|2|"_s);
    EXPECT_EQ(accessibleName(drawn(u"codeText"_s)), u"Code: int i;"_s);
    EXPECT_EQ(accessibleName(drawn(u"tableText"_s)), u"Table: a\tb\n1\t2"_s);
}

TEST_F(ReplyBlocksTest, AGrowingReplyTouchesOnlyItsLastBlock)
{
    const QString text =
        u"# Title\n\n"_s + u"A paragraph with *some* words. "_s.repeated(10) + u"\n\n- a\n- b\n\nLast"_s;
    send();
    stream(text);
    const QList<QQuickItem *> before = blocks();
    ASSERT_EQ(before.size(), 4);
    QList<QRectF> places;
    for (QQuickItem *block : before)
        places += QRectF(block->position(), block->size());
    for (int i = 0; i < 30; ++i) {
        stream(i % 3 == 0 ? u" **loud** words that go on"_s : u" and on"_s);
        ASSERT_EQ(blocks(), before) << "no item is made anew";
        for (int block = 0; block < 3; ++block)
            ASSERT_EQ(QRectF(before[block]->position(), before[block]->size()), places[block]);
    }
    EXPECT_GT(before[3]->height(), places[3].height());
    stream(u"\n\n```cpp\nint i"_s);
    EXPECT_EQ(blocks().size(), 5);
    EXPECT_EQ(blocks().first(4), before);
}

TEST_F(ReplyBlocksTest, ALinkTellsWhereItLeadsAndOpensOnlyWhenAsked)
{
    showReply(u"[The page](https://example.com/a?b) and [trap](file:///etc/passwd)"_s);
    QQuickItem *words = drawn(u"paragraph"_s);
    const QPoint onLink = words->mapToScene({20, 10}).toPoint();
    QTest::mouseMove(m_window, onLink);
    ASSERT_TRUE(eventually([&] { return words->property("pointedLink") == u"https://example.com/a?b"_s; }));
    settle();
    EXPECT_TRUE(m_openedLinks.isEmpty());
    QTest::mouseClick(m_window, Qt::LeftButton, {}, onLink);
    EXPECT_EQ(m_openedLinks, QStringList(u"https://example.com/a?b"_s));

    QTest::mouseMove(m_window, QPoint(1, 1));
    words->forceActiveFocus();
    words->setProperty("cursorPosition", 3);
    EXPECT_EQ(words->property("focusedLink"), u"https://example.com/a?b"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(m_openedLinks.size(), 2);
    m_app->presentation().shell->openLink(u"file:///etc/passwd"_s); // whatever a page asks for
    words->setProperty("cursorPosition", 15);
    EXPECT_EQ(words->property("focusedLink"), QString());
    press(Qt::Key_Return);
    EXPECT_EQ(m_openedLinks.size(), 2);
}

TEST_F(ReplyBlocksTest, WhatIsCopiedIsTheWholeOfWhatIsSelected)
{
    const QString paragraph = u"several words "_s.repeated(900).trimmed();
    const QString code = u"line\n"_s.repeated(40) + QString(9000, u'x') + u"\nend"_s;
    const QString table = u"|a|b|\n|-|-|\n"_s + u"|1|**2**|\n"_s.repeated(300);
    showReply(paragraph + u"\n\n1. one\n   - two\n\n```\n"_s + code + u"\n```\n"_s + table +
              u"```chart\nNice | 1\nDull | 2\n```\n```facts\nBuilt | 2004\nSold | 2010\n```\n"_s);
    const QString reply = paragraph + u"\n\n1. one\n  ◦ two\n\n"_s + code + u"\n\na\tb"_s +
                          u"\n1\t2"_s.repeated(300) + u"\n\nNice: 1\nDull: 2\n\nBuilt: 2004\nSold: 2010"_s;
    const auto copied = [this](QQuickItem *text, int from, int to) {
        text->forceActiveFocus();
        QMetaObject::invokeMethod(text, "select", Q_ARG(int, from), Q_ARG(int, to));
        press(Qt::Key_C, Qt::ControlModifier);
        return clipboard();
    };
    EXPECT_EQ(copied(drawn(u"paragraph"_s), 5, 10003).size(), 9996) << "parted at 4,000 and 8,000";
    EXPECT_EQ(copied(drawn(u"paragraph"_s), 3000, 5000), paragraph.mid(3000, 1999));
    EXPECT_EQ(copied(drawn(u"tableText"_s), 2, 9), u"a\tb\n1\t2"_s);
    EXPECT_EQ(copied(drawn(u"codeText"_s), 5, 24 * 5 - 1), code.mid(5)) << "with what is folded away";
    drawn(u"code"_s)->setProperty("unfolded", true);
    EXPECT_EQ(copied(drawn(u"codeText"_s), 5, 8000), code.mid(5, 7994));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), reply);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"Question\n\n"_s + reply);
    EXPECT_EQ(copied(drawn(u"tableText"_s), 2, 9), u"a\tb\n1\t2"_s) << "the chat isn't selected any more";
    item(u"composer"_s)->forceActiveFocus();
    press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(clipboard(), reply);
}

TEST_F(ReplyBlocksTest, ASelectionDraggedPastTheEdgeScrolls)
{
    showReply(u"First word\n\n"_s + u"And more\n\n"_s.repeated(80) + u"```facts\nBuilt | 2004\n"_s);
    QQuickItem *list = item(u"messages"_s);
    for (int page = 0; page < 8; ++page)
        press(Qt::Key_PageUp);
    settle();
    const QPoint start = blocks().first()->mapToScene({40, 12}).toPoint();
    const QPoint below(start.x() + 400, qRound(list->mapToScene({0, list->height()}).y()) + 30);
    QTest::mousePress(m_window, Qt::LeftButton, {}, start);
    QTest::mouseMove(m_window, (start + below) / 2);
    QTest::mouseMove(m_window, below);
    const QQuickItem *last = blocks().last();
    EXPECT_TRUE(eventually([&] {
        return last->mapToScene({0, last->height()}).y() < list->mapToScene({0, list->height()}).y();
    }));
    QTest::mouseRelease(m_window, Qt::LeftButton, {}, below);
    settle();
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard().count(u"And more\n\n"_s), 80) << clipboard().toStdString();
    EXPECT_TRUE(clipboard().endsWith(u"Built: 2004"_s)) << clipboard().right(60).toStdString();
    item(u"composer"_s)->forceActiveFocus();
    settle();
    EXPECT_EQ(blocks().first()->property("selectedText"), QString());
}

TEST_F(ReplyBlocksTest, LongCodeFoldsUnlessItWasWatchedAsItCame)
{
    const QString lines = u"line\n"_s.repeated(60).chopped(1);
    send();
    stream(u"```cpp\n"_s + lines);
    const double whole = drawn(u"code"_s)->height();
    stream(u"\n```\nThat is it."_s);
    endReply();
    EXPECT_EQ(drawn(u"unfoldCode"_s), nullptr);
    EXPECT_GE(drawn(u"code"_s)->height(), whole);
    showReply(u"```cpp\n"_s + lines);
    EXPECT_LT(drawn(u"code"_s)->height(), whole * 0.7);
    click(drawn(u"copyCode"_s));
    EXPECT_EQ(clipboard(), lines) << "a folded one is copied whole";
    click(drawn(u"unfoldCode"_s));
    settle();
    EXPECT_GE(drawn(u"code"_s)->height(), whole);
}

TEST_F(ReplyBlocksTest, WhatIsWiderThanTheReplyScrollsSideways)
{
    const QString wide = u"a long cell of words|"_s.repeated(12);
    showReply(u"|"_s + wide + u"\n|"_s + u"-|"_s.repeated(12) + u"\n|"_s + wide + u"\n\n```\n"_s +
              u"wide code "_s.repeated(60) + u"\n```"_s);
    for (const QString &name : {u"tableText"_s, u"codeText"_s}) {
        QQuickItem *item = drawn(name);
        EXPECT_GT(item->width(), drawn(u"replyBlocks"_s)->width()) << name.toStdString();
        item->forceActiveFocus();
        press(Qt::Key_End, Qt::ControlModifier);
        EXPECT_LT(item->mapToItem(drawn(u"replyBlocks"_s), QPointF()).x(), -50) << "the cursor stays in view";
    }
}

TEST_F(ReplyBlocksTest, AChartTellsItsValuesToTheArrowKeys)
{
    for (const QString &value : {u"1"_s, u"-1"_s}) {
        showReply(u"```chart\nscale: log\na | 5\nb | "_s + value);
        EXPECT_EQ(drawn(u"logarithmic"_s) != nullptr, value == u"1"_s) << "what is said is what is drawn";
    }
    showReply(u"```chart\ntype: line\na | $1.50\nb | $2\nc | -3"_s);
    QQuickItem *plot = drawn(u"chartPlot"_s);
    plot->forceActiveFocus();
    EXPECT_EQ(drawn(u"chartValue"_s)->property("text"), u"a: $1.50"_s);
    for (int i = 0; i < 5; ++i)
        press(Qt::Key_Right);
    EXPECT_EQ(drawn(u"chartValue"_s)->property("text"), u"c: -3"_s);
    EXPECT_EQ(accessibleName(plot), u"c: -3"_s);
}

TEST_F(ReplyBlocksTest, HostileTextsAreDrawn)
{
    const QStringList texts{u"---\n"_s.repeated(20'000),
                            QString(200'000, u'x'),
                            u"```\n"_s + QString(200'000, u'x'),
                            u"|"_s + u"a|"_s.repeated(500) + u"\n|-|\n"_s + u"|b|\n"_s.repeated(2000),
                            u"**[`"_s.repeated(20'000),
                            u"\u202e<img src=http://a.b/c>\ufffc\u2029\ufdd0"_s + QChar(0) + QChar(0xD800) +
                                u"*x*"_s,
                            u"```chart\na | 1e308\nb | -1\nc | 99999999999999999999999999999999"_s,
                            u"```facts\n"_s + u"a: b\n"_s.repeated(5000)};
    for (const QString &text : texts) {
        showReply(text);
        ASSERT_NE(drawn(u"replyBlocks"_s), nullptr);
        EXPECT_GT(drawn(u"replyBlocks"_s)->height(), 5) << text.first(20).toStdString();
    }
}

TEST_F(ReplyBlocksTest, CodeHasItsColoursAtOnceAndKeepsThemAsItGrows)
{
    const auto colours = [this] {
        QString words;
        const QQuickItem *code = drawn(u"codeText"_s);
        const auto *document = code->property("textDocument").value<QQuickTextDocument *>()->textDocument();
        for (QTextBlock line = document->begin(); line.isValid(); line = line.next()) {
            for (const auto &format : line.layout()->formats())
                words += line.text().sliced(format.start, format.length) +
                         format.format.foreground().color().name();
        }
        return words;
    };
    send();
    stream(u"```py\nreturn 1 # a"_s);
    const QString before = colours();
    EXPECT_EQ(before, u"return#7a2fa81#8c4300# a#5a606c"_s);
    stream(u"\n'''x\ny"_s);
    EXPECT_EQ(colours(), before + u"'''x#1b6434y#1b6434"_s);
    endReply();
}

} // namespace morvane
