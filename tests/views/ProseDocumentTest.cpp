#include "views/ProseDocument.h"

#include "view_models/blocks/Prose.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextList>

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
        const QTextList *list = block.textList();
        looks +=
            u'\n' + (list ? list->itemText(block) + QString::number(list->format().indent()) : u"p"_s) + u':';
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
                prose.marks.append({pick(3), pick(2) == 0});
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

} // namespace morvane
