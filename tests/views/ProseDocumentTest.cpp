#include "views/ProseDocument.h"

#include "view_models/blocks/Prose.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QTextBlock>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <random>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Every character with its look.
QString looksOf(QTextDocument *document)
{
    QString looks;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        const QTextBlockFormat place = block.blockFormat();
        looks += u"\n%1 %2:"_s.arg(place.indent()).arg(place.textIndent());
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextCharFormat format = part.fragment().charFormat();
            const QString look =
                u"%1%2%3"_s.arg(format.fontWeight()).arg(format.fontItalic()).arg(format.anchorHref());
            for (const QChar c : part.fragment().text())
                looks += c + look;
        }
    }
    return looks;
}

} // namespace

// A document that was edited step by step is the one that would have been written at once.
TEST(ProseDocumentTest, ChangedWordsLookAsIfWrittenAnew)
{
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick; TextEdit {}", {});
    const auto documentOf = [](QObject *edit) {
        return edit->property("textDocument").value<QQuickTextDocument *>();
    };
    const std::unique_ptr<QObject> edited(component.create());
    ProseDocument stepwise;
    stepwise.setDocument(documentOf(edited.get()));
    std::mt19937 random(7);
    const auto pick = [&random](int below) {
        return static_cast<int>(random() % static_cast<unsigned>(below));
    };
    for (int step = 0; step < 300; ++step) {
        Prose prose;
        const bool isList = pick(4) == 0;
        for (int part = pick(isList ? 6 : 3); part >= 0; --part) {
            if (isList)
                prose.marks.append({pick(3), pick(9) == 0 ? u"1234."_s : u"3."_s});
            AttributedText text;
            for (int piece = pick(4); piece >= 0; --piece)
                text.append(u"ab\ncd"_s.repeated(1 + pick(2)), static_cast<AttributedText::Format>(pick(3)),
                            pick(4) == 0 ? u"http://a.b"_s : QString());
            prose.parts.append(text);
        }
        if (step % 40 == 0)
            prose.parts.first().append(QString(9000, u'x'));
        stepwise.setProse(QVariant::fromValue(prose));
        const std::unique_ptr<QObject> fresh(component.create());
        ProseDocument atOnce;
        atOnce.setProse(QVariant::fromValue(prose));
        atOnce.setDocument(documentOf(fresh.get()));
        ASSERT_EQ(looksOf(documentOf(edited.get())->textDocument()),
                  looksOf(documentOf(fresh.get())->textDocument()))
            << step;
    }
}

// While words come, what is laid out for each of them stays short, and nothing that can be seen or copied
// tells so.
TEST(ProseDocumentTest, ALongParagraphGrowsAsIfItWereOne)
{
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick; TextEdit { width: 300; wrapMode: TextEdit.Wrap }", {});
    const auto documentOf = [](QObject &edit) {
        return edit.property("textDocument").value<QQuickTextDocument *>()->textDocument();
    };
    const auto placeOf = [](QObject &edit, int at) {
        QRectF place;
        QMetaObject::invokeMethod(&edit, "positionToRectangle", Q_RETURN_ARG(QRectF, place), Q_ARG(int, at));
        return place;
    };
    for (const QString &word : {u"extraordinary "_s, u"שלום\n"_s, u"long"_s}) {
        const std::unique_ptr<QObject> edit(component.create());
        const std::unique_ptr<QObject> other(component.create());
        ProseDocument growing;
        ProseDocument whole;
        growing.setGrowing(true);
        growing.setDocument(edit->property("textDocument").value<QQuickTextDocument *>());
        whole.setDocument(other->property("textDocument").value<QQuickTextDocument *>());
        Prose prose;
        prose.parts.append(AttributedText());
        int longest = 0;
        for (int step = 0; step < 280; ++step) {
            if (step % 100 == 99) {
                for (const auto &[item, document] :
                     {std::pair{edit.get(), &growing}, {other.get(), &whole}}) {
                    item->setProperty("width", 300 + step);
                    document->setWidth(300 + step);
                }
            }
            AttributedText &text = prose.parts.first();
            if (step % 50 == 49)
                text.text.chop(word.size() * 3); // marks have closed
            const bool isBold = step % 17 == 0;
            text.append(word.repeated(1 + step % 3),
                        isBold ? AttributedText::Bold : AttributedText::Format());
            growing.setProse(QVariant::fromValue(prose));
            if (step % 100 != 99) // some lines are joined until the next words come
                longest = std::max(longest, documentOf(*edit)->lastBlock().length());
            whole.setProse(QVariant::fromValue(prose));
            ASSERT_EQ(edit->property("contentHeight"), other->property("contentHeight")) << step;
            const int last = static_cast<int>(text.text.size());
            for (const int at : {last, last / 2, last / 3})
                ASSERT_EQ(placeOf(*edit, at), placeOf(*other, at)) << step << word.toStdString();
        }
        // Shorter words fit into a line that had ended.
        const int lastLines = documentOf(*edit)->lastBlock().position();
        AttributedText &text = prose.parts.first();
        text.text = text.text.first(lastLines) + u"i i i"_s;
        text.runs.removeIf([&](const auto &run) { return run.start + run.length > lastLines; });
        growing.setProse(QVariant::fromValue(prose));
        whole.setProse(QVariant::fromValue(prose));
        EXPECT_EQ(placeOf(*edit, lastLines + 4), placeOf(*other, lastLines + 4));
        EXPECT_EQ(longest < 1200, word != u"long"_s) << longest;
        growing.setGrowing(false); // as when something is selected
        EXPECT_EQ(looksOf(documentOf(*edit)), looksOf(documentOf(*other)));
    }
}

} // namespace morvane
