#pragma once

#include "documents/ImportedAttachment.h"

#include <QByteArrayView>
#include <QCoroTask>
#include <QList>
#include <QUrl>

#include <functional>
#include <stop_token>

namespace morvane {

// Pages that were read, and pages in all.
using ImportProgress = std::function<void(int done, int total)>;

// What was pasted, as bytes: nothing of it is decoded yet.
struct PastedContent {
    QList<QUrl> urls;
    QByteArray image;
};

// Turns what a person hands over into an attachment. Called on the GUI thread, which it never blocks;
// progress is told there. Failures are DocumentError, a stop is CancelledError.
class DocumentImporting {
public:
    virtual ~DocumentImporting() = default;

    // `limit` is in characters.
    [[nodiscard]] virtual QCoro::Task<ImportedAttachment>
    importDocument(QUrl url, qsizetype limit, ImportProgress progress, std::stop_token stop) = 0;

    // `name` is the one to show.
    [[nodiscard]] virtual QCoro::Task<ImportedAttachment> importImage(QByteArray data, QString name,
                                                                      std::stop_token stop) = 0;

    // The first picture among the files, else the first file, else the picture. Nothing when there is none of
    // them.
    [[nodiscard]] virtual QCoro::Task<std::optional<ImportedAttachment>>
    attachmentFromPasteboard(PastedContent content, qsizetype limit, ImportProgress progress,
                             std::stop_token stop) = 0;
};

// The text of a PDF, up to where it is longer than `limit` characters; empty when it has none. Threads as
// above.
class PDFExtracting {
public:
    virtual ~PDFExtracting() = default;
    [[nodiscard]] virtual QCoro::Task<QString> extractText(QByteArray pdf, qsizetype limit,
                                                           ImportProgress progress, std::stop_token stop) = 0;
};

// The text of any other document, by its extension. Any thread; throws DocumentError.
class TextExtracting {
public:
    virtual ~TextExtracting() = default;
    [[nodiscard]] virtual QString extractText(QByteArrayView bytes, const QString &extension) const = 0;
};

// A picture as a model gets it, and as the person sees it: the window decodes no picture, not even our own
// JPEG.
struct PreparedPicture {
    static constexpr int thumbnailSide = 96; // pixels

    QByteArray jpeg;      // without notes
    QByteArray thumbnail; // the middle of it, rows of red, green and blue, a byte each
};

// Threads as above.
class ImagePreparing {
public:
    virtual ~ImagePreparing() = default;
    [[nodiscard]] virtual QCoro::Task<PreparedPicture> prepareImage(QByteArray data,
                                                                    std::stop_token stop) = 0;
};

} // namespace morvane
