#include "views/LineHeight.h"

#include <QScopedValueRollback>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace morvane {

namespace {

bool isMet(const QTextDocument &document, double height)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().lineHeight() != height)
            return false;
    }
    return true;
}

} // namespace

void LineHeight::setDocument(QQuickTextDocument *document)
{
    if (m_document == document)
        return;
    if (m_document)
        m_document->textDocument()->disconnect(this);
    m_document = document;
    if (m_document)
        connect(m_document->textDocument(), &QTextDocument::contentsChanged, this, &LineHeight::apply);
    Q_EMIT documentChanged();
    apply();
}

void LineHeight::setHeight(double height)
{
    if (m_height == height)
        return;
    m_height = height;
    Q_EMIT heightChanged();
    apply();
}

// New paragraphs take the format over; only a text that is set as a whole has lost it.
void LineHeight::apply()
{
    if (!m_document || m_height <= 0 || m_applies)
        return;
    QTextDocument &document = *m_document->textDocument();
    if (isMet(document, m_height))
        return;
    const QScopedValueRollback applying(m_applies, true);
    const bool hasSteps = document.isUndoAvailable() || document.isRedoAvailable();
    QTextBlockFormat format;
    format.setLineHeight(m_height, QTextBlockFormat::MinimumHeight);
    QTextCursor cursor(&document);
    if (hasSteps)
        cursor.joinPreviousEditBlock();
    else
        cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.mergeBlockFormat(format);
    cursor.endEditBlock();
    if (!hasSteps)
        document.clearUndoRedoStacks();
}

} // namespace morvane
