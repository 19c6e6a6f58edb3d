#include "views/GrowingText.h"

#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>

namespace morvane {

void GrowingText::setDocument(QQuickTextDocument *document)
{
    if (m_document == document)
        return;
    m_document = document;
    Q_EMIT documentChanged();
    showAll();
}

void GrowingText::setText(const QString &text)
{
    if (m_text == text)
        return;
    const bool grows = !m_text.isEmpty() && text.startsWith(m_text);
    const qsizetype shown = m_text.size();
    m_text = text;
    if (grows)
        append(QStringView(m_text).sliced(shown));
    else
        showAll();
    Q_EMIT textChanged();
}

void GrowingText::setLineHeight(double height)
{
    if (m_lineHeight == height)
        return;
    m_lineHeight = height;
    Q_EMIT lineHeightChanged();
    showAll();
}

void GrowingText::showAll()
{
    if (!m_document)
        return;
    QTextDocument *document = m_document->textDocument();
    document->setUndoRedoEnabled(false);
    document->setPlainText(m_text);
    QTextBlockFormat format;
    format.setLineHeight(m_lineHeight, QTextBlockFormat::MinimumHeight);
    QTextCursor cursor(document);
    cursor.select(QTextCursor::Document);
    cursor.mergeBlockFormat(format);
}

void GrowingText::append(QStringView piece)
{
    if (!m_document)
        return;
    QTextCursor end(m_document->textDocument());
    end.movePosition(QTextCursor::End);
    end.insertText(piece.toString()); // a new paragraph takes over the format of the one before it
}

} // namespace morvane
