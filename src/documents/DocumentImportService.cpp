#include "documents/DocumentImportService.h"

#include "async/Work.h"
#include "documents/DocumentError.h"
#include "documents/DocumentText.h"
#include "utils/log/Log.h"
#include "utils/text/Text.h"

#include <algorithm>
#include <utility>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;

namespace {

constexpr auto category = Log::Category::Documents;

void logImported(const DocumentText::Cut &cut)
{
    Log::info(category, "Imported document (%ld characters, truncated: %{bool}d)"_L1,
              {Text::characterCount(cut.text), cut.wasTruncated});
}

} // namespace

DocumentImportService::DocumentImportService(Parts parts, qint64 maxFileSizeBytes, Read read)
    : m_parts(parts)
    , m_maxFileSizeBytes(maxFileSizeBytes)
    , m_read(std::move(read))
{}

QCoro::Task<ImportedAttachment> DocumentImportService::importDocument(QUrl url, qsizetype limit,
                                                                      ImportProgress progress,
                                                                      std::stop_token stop)
{
    const QString extension = DocumentFile::extensionOf(url.path());
    if (!DocumentFile::isSupported(extension)) {
        const QString shown = extension.isEmpty() ? u"unknown"_s : extension;
        Log::info(category, "Rejected unsupported file type: %{public}s"_L1, {shown});
        throw DocumentError(DocumentError::UnsupportedType{shown});
    }
    const QByteArray bytes = co_await read(url, stop);
    const QString text = co_await extracted(bytes, extension, limit, progress, stop);
    const std::function<DocumentText::Cut()> cutting = [text, limit] {
        DocumentText::Cut result = DocumentText::cut(text, limit);
        logImported(result);
        return result;
    };
    const DocumentText::Cut cut = co_await m_parts.work.run(cutting, stop);
    const ImportedAttachment attachment{.id = QUuid::createUuid(),
                                        .filename = url.fileName(),
                                        .fileExtension = extension,
                                        .fileSizeBytes = bytes.size(),
                                        .text = cut.text,
                                        .wasTruncated = cut.wasTruncated,
                                        .imageData = std::nullopt};
    co_return attachment;
}

QCoro::Task<ImportedAttachment> DocumentImportService::importImage(QByteArray data, QString name,
                                                                   std::stop_token stop)
{
    const PreparedPicture picture = co_await m_parts.imagePreparer.prepareImage(data, stop);
    const ImportedAttachment attachment{.id = QUuid::createUuid(),
                                        .filename = name,
                                        .fileExtension = u"image"_s,
                                        .fileSizeBytes = data.size(),
                                        .text = {},
                                        .wasTruncated = false,
                                        .imageData = picture.jpeg,
                                        .thumbnail = picture.thumbnail};
    co_return attachment;
}

QCoro::Task<std::optional<ImportedAttachment>>
DocumentImportService::attachmentFromPasteboard(PastedContent content, qsizetype limit,
                                                ImportProgress progress, std::stop_token stop)
{
    const auto isImage = [](const QUrl &url) {
        return DocumentFile::isImage(DocumentFile::extensionOf(url.path()));
    };
    const auto picture = std::find_if(content.urls.cbegin(), content.urls.cend(), isImage);
    if (picture != content.urls.cend()) {
        const QUrl &url = *picture;
        const QByteArray data = co_await read(url, stop);
        const QString name = url.fileName();
        std::optional<ImportedAttachment> attachment = co_await importImage(data, name, stop);
        co_return attachment;
    }
    if (!content.urls.isEmpty()) {
        const QUrl url = content.urls.front();
        std::optional<ImportedAttachment> attachment = co_await importDocument(url, limit, progress, stop);
        co_return attachment;
    }
    if (content.image.isEmpty())
        co_return std::nullopt;
    const QString name = u"Pasted image"_s;
    const QByteArray data = content.image;
    std::optional<ImportedAttachment> attachment = co_await importImage(data, name, stop);
    co_return attachment;
}

QCoro::Task<QByteArray> DocumentImportService::read(QUrl url, std::stop_token stop)
{
    if (!url.isLocalFile())
        throw DocumentError(Plain::unreadable);
    const std::function<QByteArray()> reading = [read = m_read, path = url.toLocalFile(),
                                                 limit = m_maxFileSizeBytes] { return read(path, limit); };
    std::optional<QByteArray> bytes =
        co_await m_parts.work.ask<QByteArray>(reading, longestRead, stop, Work::Outside::Files);
    if (!bytes)
        throw DocumentError(Plain::unreadable);
    QByteArray read = std::move(*bytes);
    co_return read;
}

QCoro::Task<QString> DocumentImportService::extracted(QByteArray bytes, QString extension, qsizetype limit,
                                                      ImportProgress progress, std::stop_token stop)
{
    if (extension != "pdf"_L1) {
        const std::function<QString()> extraction = [bytes, extension, extractor = &m_parts.textExtractor] {
            return extractor->extractText(bytes, extension);
        };
        QString text = co_await m_parts.work.run(extraction, stop);
        co_return text;
    }
    QString text = co_await m_parts.pdfExtractor.extractText(bytes, limit, progress, stop);
    if (Text::trimmed(text).isEmpty()) {
        Log::info(category, "PDF contained no selectable text"_L1);
        throw DocumentError(Plain::emptyPDFText);
    }
    co_return text;
}

} // namespace morvane
