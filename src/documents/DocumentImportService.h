#pragma once

#include "documents/DocumentFile.h"
#include "documents/DocumentImporting.h"

#include <chrono>

namespace morvane {

class Work;

// All that it is given outlives it, and it outlives its calls. What a document says is neither kept nor
// logged.
class DocumentImportService final : public DocumentImporting {
public:
    struct Parts {
        Work &work;
        PDFExtracting &pdfExtractor;
        const TextExtracting &textExtractor;
        ImagePreparing &imagePreparer;
    };

    // As DocumentFile::read; any thread. May hang for as long as it likes.
    using Read = std::function<QByteArray(QString path, qint64 limitBytes)>;
    // A file that takes longer (a network drive that is gone) can't be read.
    static constexpr std::chrono::seconds longestRead{60};

    explicit DocumentImportService(Parts parts, qint64 maxFileSizeBytes = DocumentFile::maxFileSizeBytes,
                                   Read read = DocumentFile::read);

    [[nodiscard]] QCoro::Task<ImportedAttachment>
    importDocument(QUrl url, qsizetype limit, ImportProgress progress, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<ImportedAttachment> importImage(QByteArray data, QString name,
                                                              std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<std::optional<ImportedAttachment>>
    attachmentFromPasteboard(PastedContent content, qsizetype limit, ImportProgress progress,
                             std::stop_token stop) override;

private:
    QCoro::Task<QByteArray> read(QUrl url, std::stop_token stop);
    QCoro::Task<QString> extracted(QByteArray bytes, QString extension, qsizetype limit,
                                   ImportProgress progress, std::stop_token stop);

    Parts m_parts;
    qint64 m_maxFileSizeBytes;
    Read m_read;
};

} // namespace morvane
