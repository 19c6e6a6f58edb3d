#include "documents/extraction/PDFText.h"

#include "utils/text/Text.h"

#include <QBuffer>
#include <QPdfDocument>
#include <QPdfSelection>

namespace morvane {

using Failure = ExtractionFrames::Failure;

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
        QString text = document.getAllText(i).text();
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        text = Text::prefix(Text::trimmed(text), limit + 1);
        if (!text.isEmpty())
            page(text);
        characters += Text::characterCount(text);
        progress(i + 1, total);
    }
    return std::nullopt;
}

} // namespace morvane
