#include "DocumentImportFixture.h"

#include <QDirIterator>
#include <QProcess>

#include <algorithm>
#include <random>
#include <semaphore>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;

namespace {

using DocumentImportTest = DocumentImportFixture;

TEST_F(DocumentImportTest, TakesTextOutOfEachKind)
{
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
    for (const auto &name : {u"none"_s, u".txt"_s})
        EXPECT_EQ(refused(name, "x"), DocumentError(DocumentError::UnsupportedType{u"unknown"_s}));
    EXPECT_EQ(refusalOf([&] {
                  TestWait::await(
                      service.importDocument(QUrl(u"https://a.example/b.txt"_s), 9, progress, {}));
              }),
              DocumentError(Plain::unreadable));
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
        EXPECT_THROW(TestWait::result(outcome), DocumentError);
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
        const auto outcome = TestWait::begin(extraction.extractText("x", 9, progress, stop.get_token()));
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
