#include "documents/DocumentError.h"

#include <QLocale>

#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

// Both sizes as people read them; to the byte where they would read the same.
std::pair<QString, QString> printedSizes(const DocumentError::FileTooLarge &failure)
{
    const QLocale locale;
    const auto printed = [&locale](qint64 bytes) {
        return locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
    };
    const auto exact = [&locale](qint64 bytes) { return locale.toString(bytes) + u" bytes"_s; };
    if (printed(failure.sizeBytes) == printed(failure.limitBytes))
        return {exact(failure.sizeBytes), exact(failure.limitBytes)};
    return {printed(failure.sizeBytes), printed(failure.limitBytes)};
}

QString messageOf(const DocumentError::UnsupportedType &failure)
{
    return u"“"_s + failure.extension + u"” files are not supported."_s;
}

QString messageOf(const DocumentError::FileTooLarge &failure)
{
    const auto [size, limit] = printedSizes(failure);
    return u"This file is "_s + size + u"; the limit is "_s + limit + u"."_s;
}

QString messageOf(DocumentError::Plain failure)
{
    switch (failure) {
    case DocumentError::Plain::unreadable:
        return u"The file could not be read."_s;
    case DocumentError::Plain::emptyPDFText:
        return u"This PDF has no selectable text."_s;
    case DocumentError::Plain::extractionFailed:
        return u"Text could not be extracted from this file."_s;
    case DocumentError::Plain::passwordProtected:
        return u"This PDF is protected with a password."_s;
    case DocumentError::Plain::unreadableImage:
        return u"That image couldn't be read."_s;
    }
    return {};
}

QString suggestionOf(const DocumentError::UnsupportedType &)
{
    return u"Supported types: .txt, .md, .rtf, and .pdf."_s;
}

QString suggestionOf(const DocumentError::FileTooLarge &)
{
    return u"Try a smaller file or an excerpt."_s;
}

QString suggestionOf(DocumentError::Plain failure)
{
    switch (failure) {
    case DocumentError::Plain::unreadable:
        return u"Check that the file exists and you have permission to read it."_s;
    case DocumentError::Plain::emptyPDFText:
        return u"Scanned PDFs need OCR, which is not supported yet. Try a text-based PDF."_s;
    case DocumentError::Plain::extractionFailed:
        return u"Try converting the file to plain text first."_s;
    case DocumentError::Plain::passwordProtected:
        return u"Save a copy without the password and attach that."_s;
    case DocumentError::Plain::unreadableImage:
        return u"Try saving it as a PNG or JPEG and attaching the file."_s;
    }
    return {};
}

} // namespace

QString DocumentError::userMessage() const
{
    return std::visit([](const auto &failure) { return messageOf(failure); }, reason());
}

std::optional<QString> DocumentError::recoverySuggestion() const
{
    return std::visit([](const auto &failure) { return suggestionOf(failure); }, reason());
}

} // namespace morvane
