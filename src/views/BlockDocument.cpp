#include "views/BlockDocument.h"

#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

namespace morvane {

using namespace Qt::StringLiterals;

BlockDocument::BlockDocument(QObject *parent)
    : QObject(parent)
{
    connect(this, &BlockDocument::documentChanged, this, &BlockDocument::written);
    connect(this, &BlockDocument::lookChanged, this, [this] {
        if (m_document)
            showAll();
    });
}

void BlockDocument::setDocument(QQuickTextDocument *document)
{
    if (m_document == document)
        return;
    m_document = document;
    if (m_document) {
        textDocument()->setUndoRedoEnabled(false);
        showAll();
    }
    Q_EMIT documentChanged();
}

QVariantList BlockDocument::links() const
{
    constexpr qsizetype most = 100;
    QVariantList links;
    QString words;
    QString address; // of the link that goes on; empty for none
    int start = 0;
    const auto end = [&](int place) {
        if (!address.isEmpty() && links.size() < most)
            links.append(QVariantMap{
                {u"words"_s, words}, {u"address"_s, address}, {u"start"_s, start}, {u"end"_s, place}});
        address.clear();
        words.clear();
    };
    QTextBlock block = m_document ? textDocument()->begin() : QTextBlock();
    for (; block.isValid() && links.size() < most; block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextFragment fragment = part.fragment();
            const QString leadsTo = fragment.charFormat().anchorHref();
            if (leadsTo != address) {
                end(fragment.position());
                address = leadsTo;
                start = fragment.position();
            }
            if (!address.isEmpty())
                words += fragment.text();
        }
        end(block.position() + block.length() - 1);
    }
    return links;
}

QTextDocument *BlockDocument::textDocument() const
{
    return m_document ? m_document->textDocument() : nullptr;
}

QString BlockDocument::linkAt(int position) const
{
    if (!m_document)
        return {};
    QTextCursor cursor(textDocument());
    cursor.setPosition(std::clamp(position, 0, textDocument()->characterCount() - 1));
    if (!cursor.atBlockEnd())
        cursor.movePosition(QTextCursor::NextCharacter); // a cursor tells of what stands before it
    return cursor.charFormat().anchorHref();
}

QTextCharFormat BlockDocument::format(const AttributedText::Run &run) const
{
    QTextCharFormat format;
    if (run.formats & AttributedText::Bold)
        format.setFontWeight(QFont::Bold);
    if (run.formats & AttributedText::Italic)
        format.setFontItalic(true);
    if (run.formats & AttributedText::Strikethrough)
        format.setFontStrikeOut(true);
    if (run.formats & AttributedText::Code) {
        format.setFontFamilies({m_codeFamily});
        format.setBackground(m_codeGround);
    }
    if (!run.link.isEmpty()) {
        format.setAnchor(true);
        format.setAnchorHref(run.link);
        format.setForeground(m_linkColor);
        format.setFontUnderline(true);
    }
    return format;
}

QString BlockDocument::harmless(QString text)
{
    for (QChar &c : text) {
        if (c == u'\n' || c == QChar::ParagraphSeparator)
            c = QChar::LineSeparator;
        else if (c == u'\r' || c == u'\f' || c == u'\v')
            c = u' ';
        else if (c.isNull() || c == QChar(0xFDD0) || c == QChar(0xFDD1)) // frames, to a document
            c = QChar::ReplacementCharacter;
    }
    return text;
}

void BlockDocument::insert(QTextCursor &cursor, const AttributedText &text, qsizetype from) const
{
    const auto insertPart = [&](qsizetype end, const QTextCharFormat &format) {
        if (end > from)
            cursor.insertText(text.text.sliced(from, end - from), format);
        from = std::max(from, end);
    };
    for (const AttributedText::Run &run : text.runs) {
        insertPart(run.start, QTextCharFormat());
        insertPart(run.start + run.length, format(run));
    }
    insertPart(text.text.size(), QTextCharFormat());
}

} // namespace morvane
