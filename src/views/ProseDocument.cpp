#include "views/ProseDocument.h"

#include <QTextBlockFormat>
#include <QTextDocument>
#include <QTextList>

#include <algorithm>

namespace morvane {

namespace {

constexpr double listIndent = 26;
constexpr double gapBetweenItems = 4;

// A longer paragraph stands as several: laying out a line costs more than its length.
constexpr qsizetype longestParagraph = 4000;

// Puts words behind the text, with a new paragraph where the open one gets too long.
void append(AttributedText &whole, QStringView words, const AttributedText::Run &run)
{
    while (!words.isEmpty()) {
        const qsizetype start = whole.text.lastIndexOf(QChar::ParagraphSeparator) + 1;
        const qsizetype room = longestParagraph - (whole.text.size() - start);
        whole.append(words.first(std::min(room, words.size())), run.formats, run.link);
        words = words.sliced(std::min(room, words.size()));
        if (!words.isEmpty())
            whole.append(QStringView(u"\u2029"));
    }
}

// The length of what both texts begin with, in words and looks.
qsizetype commonLength(const AttributedText &left, const AttributedText &right)
{
    const auto ends = std::mismatch(left.text.begin(), left.text.end(), right.text.begin(), right.text.end());
    qsizetype common = ends.first - left.text.begin();
    const qsizetype runs = std::max(left.runs.size(), right.runs.size());
    for (qsizetype i = 0; i < runs; ++i) {
        const bool both = i < left.runs.size() && i < right.runs.size();
        if (both && left.runs[i] == right.runs[i])
            continue;
        const auto startOf = [i](const AttributedText &text) {
            return i < text.runs.size() ? text.runs[i].start : text.text.size();
        };
        return std::min({common, startOf(left), startOf(right)});
    }
    return common;
}

} // namespace

void ProseDocument::setProse(const QVariant &value)
{
    const auto prose = value.value<Prose>();
    if (m_prose == prose)
        return;
    const bool sameForm = prose.form == m_prose.form && !m_shown.text.isEmpty();
    m_prose = prose;
    if (textDocument()) {
        if (sameForm) {
            AttributedText whole = flattened();
            const qsizetype from = commonLength(m_shown, whole);
            write(std::move(whole), from);
        } else {
            showAll();
        }
    }
    Q_EMIT proseChanged();
}

// One text, its paragraphs apart by U+2029, so that places in it are places in the document.
AttributedText ProseDocument::flattened() const
{
    AttributedText whole;
    for (const AttributedText &part : m_prose.parts) {
        if (&part != &m_prose.parts.first())
            whole.append(QStringView(u"\u2029"));
        const QString words = harmless(part.text);
        qsizetype at = 0;
        for (const AttributedText::Run &run : part.runs) {
            append(whole, QStringView(words).sliced(at, run.start - at), {});
            append(whole, QStringView(words).sliced(run.start, run.length), run);
            at = run.start + run.length;
        }
        append(whole, QStringView(words).sliced(at), {});
    }
    return whole;
}

void ProseDocument::showAll()
{
    textDocument()->clear();
    textDocument()->setIndentWidth(listIndent);
    QTextCursor cursor(textDocument());
    QTextBlockFormat paragraph;
    paragraph.setLineHeight(lineHeight(), QTextBlockFormat::MinimumHeight);
    if (m_prose.form != Prose::Form::words)
        paragraph.setBottomMargin(gapBetweenItems);
    cursor.setBlockFormat(paragraph);
    if (m_prose.form != Prose::Form::words) {
        QTextListFormat list;
        list.setStyle(m_prose.form == Prose::Form::bullets ? QTextListFormat::ListDisc
                                                           : QTextListFormat::ListDecimal);
        cursor.createList(list);
    }
    write(flattened(), 0);
}

void ProseDocument::write(AttributedText whole, qsizetype from)
{
    QTextCursor cursor(textDocument());
    cursor.setPosition(static_cast<int>(from));
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    insert(cursor, whole, from);
    cursor.endEditBlock();
    m_shown = std::move(whole);
}

} // namespace morvane
