#include "documents/extraction/PDFText.h"

#include "utils/text/Text.h"

#include <QBuffer>
#include <QPdfDocument>
#include <QPdfSelection>

namespace morvane {

using Failure = ExtractionFrames::Failure;

namespace {

// Without what controls something: line ends are line feeds. The library marks a hyphen at the end of a line
// by U+FFFE and joins the lines, so without it a broken word is whole.
QString readable(const QString &page)
{
    QString text;
    text.reserve(page.size());
    for (const QChar c : page)
        if (c == u'\n' || c == u'\t' || (c.category() != QChar::Other_Control && c != QChar(0xFFFE)))
            text += c;
    return text;
}

} // namespace

std::optional<Failure> PDFText::read(QByteArray pdf, qsizetype limit,
                                     const std::function<void(const QString &text)> &page,
                                     const std::function<void(int done, int total)> &progress)
{
    QBuffer buffer(&pdf);
    buffer.open(QBuffer::ReadOnly);
    QPdfDocument document;
    document.load(&buffer);
    const QPdfDocument::Error error = document.error();
    if (error == QPdfDocument::Error::IncorrectPassword ||
        error == QPdfDocument::Error::UnsupportedSecurityScheme)
        return Failure::PasswordProtected;
    if (document.status() != QPdfDocument::Status::Ready)
        return Failure::Unreadable;
    const int total = document.pageCount();
    qsizetype characters = 0;
    for (int i = 0; i < total && characters <= limit; ++i) {
        const QString text = Text::prefix(Text::trimmed(readable(document.getAllText(i).text())), limit + 1);
        if (!text.isEmpty())
            page(text);
        characters += Text::characterCount(text);
        progress(i + 1, total);
    }
    return std::nullopt;
}

} // namespace morvane
