#include "documents/DocumentFile.h"

#include "documents/DocumentError.h"
#include "support/LogCapture.h"
#include "support/TestData.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Plain = DocumentError::Plain;
using TooLarge = DocumentError::FileTooLarge;

namespace {

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

    const LogCapture log;
    EXPECT_EQ(refusalOf(withSize("more.txt", 20'971'521)), DocumentError(TooLarge{20'971'521, 20'971'520}));
    // It says that it has no bytes, and has more each time.
    EXPECT_EQ(refusalOf(u"/proc/self/maps"_s, 100), DocumentError(TooLarge{101, 100}));
    EXPECT_EQ(log.lines(), QStringList({u"documents: Rejected oversized file (20971521 bytes)"_s,
                                        u"documents: Rejected oversized file (101 bytes)"_s}));

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

TEST(DocumentErrorTest, SaysTheAgreedWords)
{
    QString words;
    for (const DocumentError &error :
         {DocumentError(DocumentError::UnsupportedType{u"docx"_s}),
          DocumentError(TooLarge{31'400'000, 20'971'520}), DocumentError(TooLarge{20'971'521, 20'971'520}),
          DocumentError(Plain::unreadable), DocumentError(Plain::emptyPDFText),
          DocumentError(Plain::extractionFailed), DocumentError(Plain::passwordProtected),
          DocumentError(Plain::unreadableImage)})
        words += error.userMessage() + u"\n    "_s + *error.recoverySuggestion() + u"\n"_s;
    EXPECT_EQ(words.toStdString(), TestData::text("documents/errors.txt"));
}

} // namespace

} // namespace morvane
