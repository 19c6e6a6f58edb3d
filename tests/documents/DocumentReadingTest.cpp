#include "documents/DocumentError.h"
#include "documents/DocumentFile.h"
#include "documents/DocumentText.h"
#include "documents/RichText.h"
#include "documents/extraction/Confinement.h"
#include "support/TestData.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

using Plain = DocumentError::Plain;
using TooLarge = DocumentError::FileTooLarge;

std::optional<DocumentError> refusalOf(const QString &path, qint64 limit = DocumentFile::maxFileSizeBytes)
{
    try {
        static_cast<void>(DocumentFile::read(path, limit));
        return std::nullopt;
    } catch (const DocumentError &error) {
        return error;
    }
}

TEST(DocumentFileTest, ReadsRegularFilesOnlyAndNeverPastTheLimit)
{
    const QTemporaryDir folder;
    const auto at = [&](const char *name) { return folder.filePath(QString::fromLatin1(name)); };
    const auto withSize = [&](const char *name, qint64 size) {
        QFile file(at(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.resize(size));
        return at(name);
    };
    const auto link = [&](const QString &target, const char *name) {
        EXPECT_TRUE(QFile::link(target, at(name)));
        return at(name);
    };
    const QString full = withSize("full.txt", 20'971'520);
    EXPECT_EQ(DocumentFile::read(full).size(), 20'971'520);
    EXPECT_EQ(DocumentFile::read(link(full, "link.txt")).size(), 20'971'520);
    EXPECT_EQ(DocumentFile::read(withSize("empty.txt", 0)), QByteArray());

    EXPECT_EQ(refusalOf(withSize("more.txt", 20'971'521)), DocumentError(TooLarge{20'971'521, 20'971'520}));
    // It says that it has no bytes, and has more each time.
    EXPECT_EQ(refusalOf(u"/proc/self/maps"_s, 100), DocumentError(TooLarge{101, 100}));

    ASSERT_EQ(::mkfifo(QFile::encodeName(at("pipe.txt")).constData(), 0600), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(withSize("closed.txt", 1)).constData(), 0), 0);
    for (const QString &path : {at("pipe.txt"), link(at("pipe.txt"), "pipe-link.txt"), at("absent.txt"),
                                link(u"/dev/zero"_s, "zero.txt"), folder.path(), u"/dev/tty"_s, QString(),
                                link(at("loop.txt"), "loop.txt")})
        EXPECT_EQ(refusalOf(path), DocumentError(Plain::unreadable)) << path.toStdString();
    // The one account that may read everything steps back from that, in this thread.
    ASSERT_EQ(::chmod(QFile::encodeName(folder.path()).constData(), 0711), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(full).constData(), 0644), 0);
    const int before = ::geteuid() == 0 ? ::setfsuid(65'534) : -1;
    EXPECT_EQ(refusalOf(full), std::nullopt);
    EXPECT_EQ(refusalOf(at("closed.txt")), DocumentError(Plain::unreadable));
    if (before != -1)
        ::setfsuid(static_cast<uid_t>(before));
}

TEST(DocumentFileTest, KnowsAFileByItsExtension)
{
    const struct {
        QString path;
        QString extension;
        bool isSupported;
        bool isImage;
    } cases[] = {
        {u"/a/notes.TXT"_s, u"txt"_s, true, false},    {u"/a/b.c/paper.v2.pdf"_s, u"pdf"_s, true, false},
        {u"/a/b.rtf/none"_s, QString(), false, false}, {u"/a/.txt"_s, QString(), false, false},
        {u"/a/end."_s, QString(), false, false},       {u"/a/letter.docx"_s, u"docx"_s, false, false},
        {u"/a/photo.JPeG"_s, u"jpeg"_s, false, true},  {u"readme.md"_s, u"md"_s, true, false}};
    for (const auto &[path, extension, isSupported, isImage] : cases) {
        EXPECT_EQ(DocumentFile::extensionOf(path), extension);
        EXPECT_EQ(DocumentFile::isSupported(extension), isSupported);
        EXPECT_EQ(DocumentFile::isImage(extension), isImage);
    }
}

TEST(DocumentTextTest, DecodesByMarkThenUtf8ThenLatin1)
{
    const struct {
        QByteArray bytes;
        QString text;
    } cases[] = {
        {"Gr\xc3\xbc\xc3\x9f"
         "e",
         u"Grüße"_s},
        {"Gr\xfc\xdf"
         "e",
         u"Grüße"_s},
        {"caf\xc3", u"caf\u00c3"_s}, // half a character of UTF-8
        {"\xef\xbb\xbfhi", u"hi"_s},
        {QByteArray("\xff\xfe\x42\x04\x3d\xd8\x00\xde", 8), u"т\U0001F600"_s},
        {QByteArray("\xfe\xff\x04\x42", 4), u"т"_s},
        {QByteArray("\xff\xfe\x00\x00\x42\x04\x00\x00", 8), u"т"_s},
        {"a\r\nb\rc\n\r\nd", u"a\nb\nc\n\nd"_s},
        {{}, {}},
    };
    for (const auto &[bytes, text] : cases)
        EXPECT_EQ(DocumentText::decoded(bytes), text) << bytes.toHex().toStdString();
}

TEST(DocumentTextTest, CutsAtAParagraphOrASentenceOfTheLastFifth)
{
    const auto words = [](int count) { return QString(count, u'x'); };
    const QString flag = u"\U0001F1E9\U0001F1EA"_s;
    const struct {
        const char *what;
        QString text;
        qsizetype limit;
        QString kept;
        bool wasTruncated = true;
    } cases[] = {
        {"all of it", words(100), 100, words(100), false},
        {"blanks at the ends don't count", u" \n"_s + words(100) + u"\n\t "_s, 100, words(100), false},
        {"a paragraph", words(95) + u"\n\n"_s + words(50), 100, words(95)},
        {"a paragraph before a sentence behind it", words(85) + u"\n\nx. "_s + words(50), 100, words(85)},
        {"a paragraph just at four fifths", words(80) + u"\n\n"_s + words(50), 100, words(80)},
        {"one too early", words(79) + u"\n\n"_s + words(50), 100, words(79) + u"\n\n"_s + words(19)},
        {"the last sentence", words(70) + u"\n\n"_s + words(10) + u". x. "_s + words(50), 100,
         words(70) + u"\n\n"_s + words(10) + u". x. "_s},
        {"a stop without its blank", words(98) + u"x. "_s + words(9), 100, words(99) + u"."_s},
        {"characters, not units", flag.repeated(100), 10, flag.repeated(10)},
        {"the fifth in characters", flag.repeated(8) + u". "_s + flag.repeated(9), 12,
         flag.repeated(8) + u". "_s + flag.repeated(2)},
        {"the fifth in characters, reached", flag.repeated(10) + u". "_s + flag.repeated(9), 12,
         flag.repeated(10) + u". "_s},
        {"nothing", words(5), 0, {}},
    };
    for (const auto &[what, text, limit, kept, wasTruncated] : cases) {
        const DocumentText::Cut cut = DocumentText::cut(text, limit);
        EXPECT_EQ(cut.text, kept) << what;
        EXPECT_EQ(cut.wasTruncated, wasTruncated) << what;
    }
}

TEST(RichTextTest, ReadsWhatAPersonSees)
{
    const auto outcome = [](const QByteArray &input) {
        const auto text = RichText::text(input);
        if (!text)
            return u"(no rich text)"_s;
        QString line = *text;
        return line.replace(u'\n', u'⏎').replace(u'\t', u'⇥').replace(u'\u00A0', u'⍽');
    };
    TestData::expect("documents/rich_text.txt", outcome);
}

TEST(RichTextTest, ReadsWhatAnOfficeProgramWrote)
{
    const QString meant = QString::fromUtf8(TestData::read("documents/office.txt"));
    EXPECT_EQ(RichText::text(TestData::read("documents/office.rtf")), meant);
}

TEST(RichTextTest, BoundsDepthAndSkipsOfAnyLength)
{
    const auto nested = [](qsizetype depth) {
        return "{\\rtf1 " + QByteArray(depth - 1, '{') + "x" + QByteArray(depth, '}');
    };
    EXPECT_EQ(RichText::text(nested(RichText::maxDepth)), u"x"_s);
    EXPECT_EQ(RichText::text(nested(RichText::maxDepth + 1)), std::nullopt);
    EXPECT_EQ(RichText::text(nested(10'000'000)), std::nullopt);
    EXPECT_EQ(RichText::text("{\\rtf1 a\\bin2147483647 b}"), u"a"_s);
    EXPECT_EQ(RichText::text("{\\rtf1 a\\uc2147483647\\u8364 b}"), u"a€"_s);
}

// The sanitizers need more memory than a confined process has.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t tooMuch = std::size_t{1} << 60;
#else
constexpr std::size_t tooMuch = std::size_t{2} << 30;
#endif

// How many things the process could still do, in a thread made afterwards.
int leftOpen(int inherited)
{
    Confinement::limit();
    if (!Confinement::seal())
        return 255;
    int open = 0;
    std::thread([&open, inherited] {
        constexpr int memory = PROT_READ | PROT_WRITE;
        constexpr int anonymous = MAP_PRIVATE | MAP_ANONYMOUS;
        void *const reserved = ::mmap(nullptr, std::size_t{16} << 30, PROT_NONE, anonymous, -1, 0);
        const bool could[] = {reserved == MAP_FAILED, // which the reader of PDFs needs
                              ::mprotect(reserved, tooMuch, memory) == 0,
                              ::mmap(nullptr, tooMuch, memory, anonymous, -1, 0) != MAP_FAILED,
                              ::mmap(nullptr, 4096, memory, MAP_SHARED | MAP_ANONYMOUS, -1, 0) != MAP_FAILED,
                              ::mmap(nullptr, 4096, memory, anonymous | MAP_GROWSDOWN, -1, 0) != MAP_FAILED,
                              ::fcntl(inherited, F_GETFD) != -1,
                              ::open("/etc/passwd", O_RDONLY) >= 0,
                              ::open("/tmp/morvane-confinement", O_CREAT | O_WRONLY, 0600) >= 0,
                              ::socket(AF_INET, SOCK_STREAM, 0) >= 0,
                              ::socket(AF_UNIX, SOCK_STREAM, 0) >= 0,
                              ::syscall(SYS_clone, 17, 0, 0, 0, 0) >= 0,
                              ::kill(::getppid(), 0) == 0,
                              ::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, anonymous, -1, 0) != MAP_FAILED};
        for (std::size_t i = 0; i < std::size(could); ++i)
            open += could[i] ? 1 : 0;
    }).join();
    return open;
}

TEST(ConfinementDeathTest, LeavesNoFilesNoSocketsAndNoProcesses)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const int inherited = ::open("/dev/null", O_RDONLY);
    ASSERT_GT(inherited, 2);
    EXPECT_EXIT(::_exit(leftOpen(inherited)), testing::ExitedWithCode(0), "");
}

} // namespace

} // namespace morvane
