#include "support/FileSpy.h"
#include "support/LogCapture.h"
#include "utils/files/PrivateFile.h"
#include "utils/log/Log.h"
#include "utils/log/RecentLog.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

mode_t modeOf(const QString &path)
{
    struct stat status {};
    ::stat(path.toLocal8Bit().constData(), &status);
    return status.st_mode & 07777;
}

TEST(PrivateFileTest, WritesOwnerOnlyFilesInNewOwnerOnlyFolders)
{
    const QTemporaryDir home;
    const QString path = home.filePath(u"a/b/file"_s);
    PrivateFile::write(path, "one");
    PrivateFile::write(path, "two");
    EXPECT_EQ(PrivateFile::read(path, 100), QByteArray("two"));
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(home.filePath(u"a/b"_s)), 0700U);
    EXPECT_EQ(QDir(home.filePath(u"a/b"_s)).entryList(QDir::Files | QDir::Hidden), QStringList{u"file"_s});
}

// A power cut at any moment leaves the former file or the new one, whole.
TEST(PrivateFileTest, IsOnTheDiskBeforeItTakesItsPlaceAndAFailedStepLeavesTheFormerFile)
{
    const QTemporaryDir home;
    const QString path = home.filePath(u"file"_s);
    const auto written = [&] {
        const FileSpy spy(home.path());
        PrivateFile::write(path, "one");
        return spy.steps().replaceInStrings(QRegularExpression(u"file\\.part-\\w{6}"_s), u"new"_s);
    };
    EXPECT_EQ(written(), (QStringList{u"write new"_s, u"sync new"_s, u"rename new file"_s, u"sync ."_s}));
    for (const auto &step : {u"write"_s, u"sync file."_s, u"rename"_s}) {
        FileSpy spy(home.path());
        spy.refuse(step);
        EXPECT_THROW(PrivateFile::write(path, "two"), FileError) << step.toStdString();
        EXPECT_EQ(PrivateFile::read(path, 100), QByteArray("one"));
        EXPECT_EQ(QDir(home.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"file"_s});
    }
    FileSpy spy(home.path());
    spy.refuse(u"sync ."_s);
    EXPECT_THROW(PrivateFile::write(path, "two"), FileError);
}

TEST(PrivateFileTest, ReadTellsAbsentFromTooLargeFromUnreadable)
{
    const QTemporaryDir home;
    PrivateFile::write(home.filePath(u"big"_s), QByteArray(11, 'x'));
    const auto statusOf = [&](const QString &name, qsizetype limit) {
        try {
            return PrivateFile::read(home.filePath(name), limit) ? 0 : ENOENT;
        } catch (const FileError &error) {
            return error.status();
        }
    };
    EXPECT_EQ(statusOf(u"none"_s, 10), ENOENT);
    EXPECT_EQ(statusOf(u"big"_s, 11), 0);
    EXPECT_EQ(statusOf(u"big"_s, 10), EFBIG);
    EXPECT_EQ(statusOf(u"."_s, 10), EISDIR);
}

TEST(LogTest, PrivateContentNeverReachesTheLine)
{
    const LogCapture capture;
    Log::error(Log::Category::AIProvider, "HTTP %ld from %{public}s: %s, retry %{bool}d"_L1,
               {503, u"host"_s, u"secret words"_s, true});
    Log::info(Log::Category::App, "100%s sure"_L1);
    EXPECT_EQ(capture.lines(), (QStringList{u"ai-provider: HTTP 503 from host: <private>, retry true"_s,
                                            u"app: 100%s sure"_s}));
    const QStringList recent = RecentLog::lines();
    EXPECT_TRUE(recent.last().endsWith(u"  ai.morvane.macos.app: 100%s sure"_s));
    EXPECT_TRUE(
        recent.at(recent.size() - 2)
            .endsWith(u"ai.morvane.macos.ai-provider: HTTP 503 from <text>: <private>, retry true"_s));
    for (int i = 0; i < 500; ++i)
        Log::info(Log::Category::App, "line %ld"_L1, {i});
    EXPECT_EQ(RecentLog::lines().size(), RecentLog::most);
    EXPECT_TRUE(RecentLog::lines().last().endsWith(u"line 499"_s));
}

} // namespace

} // namespace morvane
