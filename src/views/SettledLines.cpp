#include "views/SettledLines.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>

namespace morvane {

namespace {

// In UTF-16 units. What is laid out again at each piece is no longer than the one; the other is more than
// what a change at the end of a text moves, which is at most a word that fits into the line before it now.
constexpr int longestOpen = 600;
constexpr int leastOpen = 200;

// Where the last line begins that has enough behind it and a blank before it; 0 for none.
int settledLength(const QTextBlock &paragraph)
{
    const QString text = paragraph.text();
    for (int i = paragraph.layout()->lineCount() - 1; i > 0; --i) {
        const int start = paragraph.layout()->lineAt(i).textStart();
        const bool followsBlank = text[start - 1] == u' ' || text[start - 1] == QChar::LineSeparator;
        if (followsBlank && text.size() - start >= leastOpen)
            return start;
    }
    return 0;
}

QTextCursor characterAt(QTextDocument &document, qsizetype place)
{
    QTextCursor cursor(&document);
    cursor.setPosition(static_cast<int>(place));
    cursor.setPosition(static_cast<int>(place) + 1, QTextCursor::KeepAnchor);
    return cursor;
}

} // namespace

void SettledLines::mark(QString &text) const
{
    for (const Place &place : m_places) {
        if (place.at < text.size() && text[place.at] == place.blank)
            text[place.at] = QChar::ParagraphSeparator;
    }
}

qsizetype SettledLines::keepBefore(qsizetype from, QString &text)
{
    while (!m_places.isEmpty() && m_places.last().at + leastOpen > from) {
        const Place place = m_places.takeLast();
        if (place.at < text.size() && text[place.at] == QChar::ParagraphSeparator)
            text[place.at] = place.blank;
        from = std::min(from, place.at);
    }
    return from;
}

void SettledLines::settle(QTextDocument &document, QString &shown)
{
    const QTextBlock last = document.lastBlock();
    if (last.length() < longestOpen)
        return;
    document.documentLayout()->blockBoundingRect(last); // lays it out, if it isn't yet
    const int length = settledLength(last);
    if (length == 0)
        return;
    const qsizetype at = last.position() + length - 1;
    QTextCursor cursor = characterAt(document, at);
    m_places.append({at, shown[at], cursor.charFormat()});
    shown[at] = QChar::ParagraphSeparator;
    const Qt::LayoutDirection direction = last.textDirection(); // which is told by a paragraph's first letter
    cursor.beginEditBlock();
    cursor.insertText(QString(QChar::ParagraphSeparator));
    QTextBlockFormat format = cursor.blockFormat();
    format.setLayoutDirection(direction);
    cursor.setBlockFormat(format);
    cursor.endEditBlock();
}

void SettledLines::join(QTextDocument &document, QString &shown)
{
    for (const Place &place : std::exchange(m_places, {})) {
        characterAt(document, place.at).insertText(QString(place.blank), place.format);
        shown[place.at] = place.blank;
    }
}

} // namespace morvane
