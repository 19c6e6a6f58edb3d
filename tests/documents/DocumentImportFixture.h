#pragma once

#include "async/Work.h"
#include "documents/DocumentError.h"
#include "documents/DocumentImportService.h"
#include "documents/ExtractionServices.h"
#include "support/Await.h"
#include "support/ManualClock.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace morvane {

// What the tests of importing share: files as they come, and the service with the real process behind it.

// Without words its pages are pictures.
inline QByteArray pdf(int pages, const QString &words)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::WriteOnly);
    QPdfWriter writer(&buffer);
    QPainter painter(&writer);
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            writer.newPage();
        if (words.isEmpty())
            painter.drawImage(500, 500, QImage(200, 300, QImage::Format_Grayscale8));
        else
            painter.drawText(500, 500, words.arg(page + 1));
    }
    painter.end();
    return bytes;
}

inline QByteArray encoded(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::WriteOnly);
    QImageWriter writer(&buffer, format);
    EXPECT_TRUE(writer.write(image));
    return bytes;
}

inline QImage filled(int width, int height, QColor colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

class DocumentImportFixture : public testing::Test {
protected:
    // Extraction by `program`, in place of ours.
    void useProgram(const QByteArray &script)
    {
        const QString path = save(QStringLiteral("program"), "#!/bin/sh\n" + script);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
        extraction = ExtractionService(work, clock, path);
    }

    QString save(const QString &name, const QByteArray &bytes)
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }

    ImportedAttachment import(const QString &name, const QByteArray &bytes, qsizetype limit = 1000)
    {
        const QUrl url = QUrl::fromLocalFile(save(name, bytes));
        return TestWait::await(service.importDocument(url, limit, progress, stop.get_token()));
    }

    std::optional<DocumentError> refusalOf(const std::function<void()> &task)
    {
        try {
            task();
            return std::nullopt;
        } catch (const DocumentError &error) {
            return error;
        }
    }

    QImage prepared(const QByteArray &data)
    {
        const ImportedAttachment attachment =
            TestWait::await(service.importImage(data, QStringLiteral("shown.png"), stop.get_token()));
        EXPECT_EQ(attachment.fileSizeBytes, data.size());
        thumbnail = attachment.thumbnail;
        for (const char *const note : {"Exif", "ICC_PROFILE", "http://ns.adobe.com", "marked"})
            EXPECT_FALSE(attachment.imageData->contains(note)) << note;
        return QImage::fromData(*attachment.imageData, "jpeg");
    }

    QTemporaryDir folder;
    QByteArray thumbnail; // of the latest picture
    ManualClock clock;
    Work work{clock};
    struct Extraction : PDFExtracting, ImagePreparing {
        explicit Extraction(Work &work, Clock &clock)
            : real(std::make_unique<ExtractionService>(work, clock, QStringLiteral(MORVANE_EXTRACT)))
        {}
        void operator=(ExtractionService other)
        {
            real = std::make_unique<ExtractionService>(std::move(other));
        }
        QCoro::Task<QString> extractText(QByteArray bytes, qsizetype limit, ImportProgress told,
                                         std::stop_token token) override
        {
            return real->extractText(bytes, limit, told, token);
        }
        QCoro::Task<PreparedPicture> prepareImage(QByteArray data, std::stop_token token) override
        {
            return real->prepareImage(data, token);
        }
        std::unique_ptr<ExtractionService> real;
    } extraction{work, clock};
    TextExtractionService texts;
    DocumentImportService service{{work, extraction, texts, extraction}};
    std::stop_source stop;
    QList<std::pair<int, int>> pages;
    ImportProgress progress = [this](int done, int total) { pages.append({done, total}); };
};

} // namespace morvane
