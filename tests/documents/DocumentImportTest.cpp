#include "documents/DocumentImportService.h"

#include "async/Work.h"
#include "documents/DocumentError.h"
#include "documents/ExtractionServices.h"
#include "support/Await.h"
#include "support/LogCapture.h"
#include "support/ManualClock.h"

#include <QBuffer>
#include <QColorSpace>
#include <QDirIterator>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <semaphore>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;

namespace {

// Without words its pages are pictures.
QByteArray pdf(int pages, const QString &words)
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

QByteArray encoded(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QBuffer::WriteOnly);
    QImageWriter writer(&buffer, format);
    EXPECT_TRUE(writer.write(image));
    return bytes;
}

QImage filled(int width, int height, QColor colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

class DocumentImportTest : public testing::Test {
protected:
    // Extraction by `program`, in place of ours.
    void useProgram(const QByteArray &script)
    {
        const QString path = save(u"program"_s, "#!/bin/sh\n" + script);
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
            TestWait::await(service.importImage(data, u"shown.png"_s, stop.get_token()));
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

TEST_F(DocumentImportTest, TakesTextOutOfEachKind)
{
    const LogCapture log;
    EXPECT_EQ(import(u"Notes.TXT"_s, " Gr\xfc\xdf"
                                     "e \n")
                  .text,
              u"Grüße"_s);
    EXPECT_EQ(import(u"a.md"_s, "# {\\rtf1 x}").text, u"# {\\rtf1 x}"_s);
    const ImportedAttachment rich = import(u"a.rtf"_s, "{\\rtf1 one two}", 5);
    EXPECT_EQ(rich.text, u"one t"_s);
    EXPECT_TRUE(rich.wasTruncated);
    EXPECT_EQ(rich.filename, u"a.rtf"_s);
    EXPECT_EQ(rich.fileSizeBytes, 15);
    EXPECT_EQ(import(u"a.pdf"_s, pdf(3, u"Page %1, Grüße"_s)).text,
              u"Page 1, Grüße\n\nPage 2, Grüße\n\nPage 3, Grüße"_s);
    EXPECT_EQ(pages, (QList<std::pair<int, int>>{{1, 3}, {2, 3}, {3, 3}}));
    // No page is read that wouldn't fit.
    EXPECT_TRUE(import(u"long.pdf"_s, pdf(50, u"Page %1"_s), 10).wasTruncated);
    EXPECT_EQ(pages.back(), (std::pair{2, 50}));
    const auto refused = [&](const QString &name, const QByteArray &bytes) {
        return refusalOf([&] { import(name, bytes); });
    };
    EXPECT_EQ(refused(u"b.rtf"_s, "one"), DocumentError(Plain::extractionFailed));
    EXPECT_EQ(refused(u"b.pdf"_s, pdf(2, {})), DocumentError(Plain::emptyPDFText));
    EXPECT_EQ(refused(u"c.pdf"_s, "%PDF-1.4 and no more"), DocumentError(Plain::unreadable));
    EXPECT_EQ(refused(u"d.pages"_s, "x"), DocumentError(DocumentError::UnsupportedType{u"pages"_s}));
    EXPECT_EQ(refused(u"none"_s, "x"), DocumentError(DocumentError::UnsupportedType{u"unknown"_s}));
    EXPECT_EQ(refusalOf([&] {
                  TestWait::await(
                      service.importDocument(QUrl(u"https://a.example/b.txt"_s), 9, progress, {}));
              }),
              DocumentError(Plain::unreadable));
    const QStringList first{u"documents: Imported document (5 characters, truncated: false)"_s,
                            u"documents: Imported document (11 characters, truncated: false)"_s,
                            u"documents: Imported document (5 characters, truncated: true)"_s};
    EXPECT_EQ(log.lines().first(3), first);
    const QStringList last{u"documents: PDF contained no selectable text"_s,
                           u"documents: Rejected unsupported file type: pages"_s,
                           u"documents: Rejected unsupported file type: unknown"_s};
    EXPECT_EQ(log.lines().last(3), last);
}

TEST_F(DocumentImportTest, PreparesAPictureAndLeavesNothingButItsPixels)
{
    for (const char *const format : {"png", "bmp", "webp", "tiff"})
        EXPECT_EQ(prepared(encoded(filled(300, 200, Qt::red), format)).size(), QSize(300, 200)) << format;
    EXPECT_EQ(prepared(encoded(filled(4000, 3000, Qt::red), "jpeg")).size(), QSize(1536, 1152));
    EXPECT_EQ(prepared(encoded(filled(1, 4000, Qt::red), "png")).size(), QSize(1, 1536));
    EXPECT_EQ(QColor(prepared(encoded(filled(8, 8, Qt::transparent), "png")).pixel(4, 4)), QColor(Qt::white));
    QImage striped = filled(300, 100, Qt::red); // whose middle is blue
    QPainter(&striped).fillRect(100, 0, 100, 100, Qt::blue);
    prepared(encoded(striped, "png"));
    ASSERT_EQ(thumbnail.size(), 96 * 96 * 3);
    for (const qsizetype at : {qsizetype(96 * 48 + 8) * 3, qsizetype(96 * 48 + 88) * 3}) {
        EXPECT_LT(quint8(thumbnail[at]), 60);
        EXPECT_GT(quint8(thumbnail[at + 2]), 200);
    }
    const struct {
        QColorSpace::NamedColorSpace space;
        const char *format;
        int red; // in sRGB
    } spaces[] = {{QColorSpace::AdobeRgb, "png", 230},
                  {QColorSpace::AdobeRgb, "jpeg", 230},
                  {QColorSpace::DisplayP3, "png", 216},
                  {QColorSpace::DisplayP3, "jpeg", 216}};
    for (const auto &[space, format, red] : spaces) {
        QImage wide = filled(64, 64, QColor(200, 60, 60));
        wide.setText(u"Author"_s, u"marked words"_s);
        wide.setColorSpace(space);
        EXPECT_NEAR(QColor(prepared(encoded(wide, format)).pixel(9, 9)).red(), red, 4) << format;
    }

    // One bit for each pixel: nothing but their number is too much.
    const auto bomb = [](int side, const char *format) {
        QImage image(side, side, QImage::Format_Mono);
        image.fill(0);
        return encoded(image, format);
    };
    for (const QByteArray &data :
         {bomb(30'000, "png"), bomb(10'001, "png"), bomb(16'000, "jpeg"), QByteArray("GIF89a"), QByteArray(),
          QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>")})
        EXPECT_EQ(refusalOf([&] { prepared(data); }), DocumentError(Plain::unreadableImage));
}

// By where the first row and the first column lie, in each of the eight ways a camera can be held.
TEST_F(DocumentImportTest, HoldsAPictureUpright)
{
    QImage corners(3072, 1536, QImage::Format_RGB32);
    corners.fill(Qt::white);
    QPainter painter(&corners);
    painter.fillRect(0, 0, 1536, 768, Qt::red);
    painter.fillRect(1536, 0, 1536, 768, Qt::blue);
    painter.end();
    const QByteArray jpeg = encoded(corners, "jpeg");
    const QString seen[] = {u"red blue white white"_s, u"blue red white white"_s, u"white white blue red"_s,
                            u"white white red blue"_s, u"red white blue white"_s, u"white red white blue"_s,
                            u"white blue white red"_s, u"blue white red white"_s};
    for (int way = 1; way <= 8; ++way) {
        QByteArray exif = QByteArray::fromHex("ffe1002245786966000049492a000800000001001201030001000000");
        exif += static_cast<char>(way) + QByteArray::fromHex("00000000000000");
        const QImage image = prepared(QByteArray(jpeg).insert(2, exif));
        EXPECT_EQ(image.size(), way < 5 ? QSize(1536, 768) : QSize(768, 1536));
        QStringList colours;
        for (const int quarter : {0, 1, 2, 3}) {
            const QColor colour = image.pixelColor(image.width() * (1 + quarter % 2 * 2) / 4,
                                                   image.height() * (1 + quarter / 2 * 2) / 4);
            colours += colour.green() > 128 ? u"white"_s : colour.red() > 128 ? u"red"_s : u"blue"_s;
        }
        EXPECT_EQ(colours.join(u' '), seen[way - 1]) << way;
    }
}

TEST_F(DocumentImportTest, PreparesTheLargestPhotographs)
{
    QImage image(16'000, 12'000, QImage::Format_Indexed8);
    image.setColorTable({qRgb(255, 0, 0)});
    image.fill(0);
    const QImage shown = prepared(encoded(image, "jpeg"));
    EXPECT_EQ(shown.size(), QSize(1536, 1152));
    EXPECT_GT(shown.pixelColor(1535, 1151).red(), 240);
}

TEST_F(DocumentImportTest, OpensAPDFThatIsEncryptedWhereItNeedsNoPassword)
{
    const QString plain = save(u"plain.pdf"_s, pdf(2, u"Page %1"_s));
    const QString sealed = folder.filePath(u"sealed.pdf"_s);
    for (const char *const how : {"40", "128 --use-aes=n", "128 --use-aes=y", "256"})
        for (const char *const password : {"", "open sesame"}) {
            const QStringList strength = QString::fromLatin1(how).split(u' ');
            ASSERT_EQ(QProcess::execute(u"qpdf"_s, QStringList{u"--allow-weak-crypto"_s, u"--encrypt"_s,
                                                               QString::fromLatin1(password), u"owner"_s} +
                                                       strength + QStringList{u"--"_s, plain, sealed}),
                      0);
            QFile file(sealed);
            ASSERT_TRUE(file.open(QFile::ReadOnly));
            QString text;
            const auto refusal = refusalOf([&] { text = import(u"a.pdf"_s, file.readAll()).text; });
            EXPECT_EQ(text, *password == '\0' ? u"Page 1\n\nPage 2"_s : QString()) << how;
            EXPECT_EQ(refusal.has_value(), *password != '\0') << how;
            EXPECT_EQ(refusal.value_or(DocumentError(Plain::passwordProtected)),
                      DocumentError(Plain::passwordProtected));
        }
}

// Nine of ten words at least are those that another reader finds, and none has a character nobody sees.
TEST_F(DocumentImportTest, ReadsTheManualsOfTheSystem)
{
    QDirIterator manuals(u"/usr/share/doc"_s, {u"*.pdf"_s}, QDir::Files, QDirIterator::Subdirectories);
    int read = 0;
    while (manuals.hasNext()) {
        const QUrl url = QUrl::fromLocalFile(manuals.next());
        const QString text = TestWait::await(service.importDocument(url, 10'000'000, progress, {})).text;
        QProcess other;
        other.start(u"pdftotext"_s, {url.toLocalFile(), u"-"_s});
        ASSERT_TRUE(other.waitForFinished());
        const QStringList found = QString::fromUtf8(other.readAllStandardOutput()).simplified().split(u' ');
        const QStringList ours = text.simplified().split(u' ');
        const QSet<QString> known(ours.begin(), ours.end());
        const auto alike =
            std::ranges::count_if(found, [&](const QString &word) { return known.contains(word); });
        EXPECT_GT(static_cast<double>(alike), 0.9 * static_cast<double>(found.size()))
            << url.path().toStdString();
        EXPECT_FALSE(text.contains(QChar(0xFFFE)));
        ++read;
    }
    if (read == 0)
        GTEST_SKIP() << "no manual is installed as a PDF";
}

TEST_F(DocumentImportTest, ReadsTenThousandPagesAndTellsAHundredTimes)
{
    const QString text = import(u"a.pdf"_s, pdf(10'000, u"Page %1"_s), 1'000'000).text;
    EXPECT_TRUE(text.endsWith(u"\n\nPage 9999\n\nPage 10000"_s));
    EXPECT_EQ(pages.size(), 101);
    EXPECT_EQ(pages.back(), std::pair(10'000, 10'000));
}

// A file behind a network that is gone holds up nothing but itself.
TEST_F(DocumentImportTest, GivesUpAFileThatIsNeverRead)
{
    const auto gate = std::make_shared<std::counting_semaphore<>>(0);
    const DocumentImportService::Read hang = [gate](const QString &path, qint64 limit) {
        if (path.endsWith(u"gone.txt"_s))
            gate->acquire();
        return DocumentFile::read(path, limit);
    };
    DocumentImportService slow({work, extraction, texts, extraction}, 1000, hang);
    const QUrl gone = QUrl::fromLocalFile(save(u"gone.txt"_s, "words"));
    std::vector<std::shared_ptr<TestWait::Outcome<ImportedAttachment>>> outcomes;
    for (int i = 0; i < Work::mostThreads; ++i) {
        outcomes.push_back(std::make_shared<TestWait::Outcome<ImportedAttachment>>());
        TestWait::collect(slow.importDocument(gone, 9, progress, {}), outcomes.back());
    }
    const QUrl here = QUrl::fromLocalFile(save(u"here.txt"_s, "words"));
    EXPECT_EQ(TestWait::await(slow.importDocument(here, 9, progress, {})).text, u"words"_s);
    clock.advance(DocumentImportService::longestRead);
    for (const auto &outcome : outcomes) {
        TestWait::until([&] { return outcome->done; });
        EXPECT_THROW(std::rethrow_exception(outcome->error), DocumentError);
    }
    work.end();
    gate->release(Work::mostThreads);
}

TEST_F(DocumentImportTest, TakesThePictureAmongPastedFilesThenAFileThenTheImage)
{
    const QByteArray png = encoded(filled(9, 9, Qt::red), "png");
    const QUrl text = QUrl::fromLocalFile(save(u"a.txt"_s, "words"));
    const QUrl picture = QUrl::fromLocalFile(save(u"b.PNG"_s, png));
    const struct {
        PastedContent content;
        QString filename;
    } cases[] = {
        {{{text, picture}, {}}, u"b.PNG"_s}, {{{text}, png}, u"a.txt"_s}, {{{}, png}, u"Pasted image"_s}, {}};
    for (const auto &[content, filename] : cases) {
        const auto attachment = TestWait::await(service.attachmentFromPasteboard(content, 99, progress, {}));
        EXPECT_EQ(attachment ? attachment->filename : QString(), filename);
    }
}

TEST_F(DocumentImportTest, SurvivesWhateverTheExtractingProcessDoes)
{
    const char *const scripts[] = {
        "kill -SEGV $$",
        "exit 1",
        "exec cat /dev/zero",
        "while :; do printf 't\\377\\377\\000\\000'; head -c 65535 /dev/zero; done",
        "printf 't\\000\\000\\000\\377'",
        "printf 't\\002\\000\\000\\000hi'",                              // and no end
        "printf 't\\002\\000\\000\\000\\377\\376d\\000\\000\\000\\000'", // no UTF-8
        "printf 'd\\000\\000\\000\\000d\\000\\000\\000\\000'",
        "printf 'p\\001\\000\\000\\000xd\\000\\000\\000\\000'",
        "printf 'd\\000\\000\\000\\000'; exit 3"};
    for (const char *script : scripts) {
        useProgram(script);
        EXPECT_EQ(refusalOf([&] { import(u"a.pdf"_s, QByteArray(1 << 20, 'x')); }),
                  DocumentError(Plain::extractionFailed))
            << script;
    }
    extraction = ExtractionService(work, clock, folder.filePath(u"absent"_s));
    EXPECT_EQ(refusalOf([&] { import(u"a.pdf"_s, "x"); }), DocumentError(Plain::extractionFailed));
    useProgram("printf 'f\\001\\000\\000\\000p'; exec sleep 1000");
    EXPECT_EQ(refusalOf([&] { import(u"a.pdf"_s, "x"); }), DocumentError(Plain::passwordProtected));
}

TEST_F(DocumentImportTest, EndsAProcessThatHangsByTheTimeOrTheStop)
{
    const QString begun = folder.filePath(u"begun"_s);
    for (const bool isStopped : {false, true}) {
        QFile::remove(begun);
        useProgram("echo $$ > '" + begun.toUtf8() + "'; exec sleep 1000");
        progress = [](int, int) {};
        const auto outcome = std::make_shared<TestWait::Outcome<QString>>();
        TestWait::collect(extraction.extractText("x", 9, progress, stop.get_token()), outcome);
        // The work's thread says nothing until then, so the wait looks by itself.
        while (QFile(begun).size() == 0)
            TestWait::settle();
        QFile file(begun);
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        const QString process = u"/proc/"_s + QString::fromLatin1(file.readAll().trimmed());
        if (isStopped)
            stop.request_stop();
        else
            clock.advance(ExtractionService::longestRun);
        TestWait::until([&] { return outcome->done; });
        if (isStopped)
            EXPECT_THROW(std::rethrow_exception(outcome->error), CancelledError);
        else
            EXPECT_THROW(std::rethrow_exception(outcome->error), DocumentError);
        while (QFile::exists(process))
            TestWait::settle();
    }
}

// Broken files come to an end of a known kind, and none takes the program along.
TEST_F(DocumentImportTest, ReadsTwoHundredBrokenFiles)
{
    const QImage image = filled(40, 30, Qt::blue);
    const QByteArray seeds[] = {pdf(2, u"Page %1"_s), encoded(image, "jpeg"), encoded(image, "png"),
                                encoded(image, "webp"), encoded(image, "tiff")};
    std::mt19937 random(20260301);
    int broken = 0;
    for (int i = 0; i < 200; ++i) {
        QByteArray bytes = seeds[i % 5];
        for (int changes = 0; changes < 12; ++changes)
            bytes[static_cast<qsizetype>(random() % bytes.size())] = static_cast<char>(random());
        if (i % 7 == 0)
            bytes.truncate(static_cast<qsizetype>(random() % bytes.size()));
        const auto refusal = refusalOf([&] {
            if (i % 5 == 0)
                import(u"a.pdf"_s, bytes);
            else
                TestWait::await(service.importImage(bytes, {}, {}));
        });
        broken += refusal ? 1 : 0;
    }
    EXPECT_GT(broken, 50);
    EXPECT_LT(broken, 200);
}

} // namespace

} // namespace morvane
