#include "ai/local/ArchiveUnpacking.h"

#include "TestArchive.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;
using TestArchive::Kind;
using Reason = ArchiveUnpacking::Failure::Reason;

class ArchiveUnpackingTest : public testing::Test {
protected:
    ArchiveUnpackingTest() { QDir().mkpath(folder); }

    std::optional<Reason> unpack(const QByteArray &bytes, const ArchiveUnpacking::Limits &limits = {})
    {
        TestArchive::write(archive, bytes);
        try {
            ArchiveUnpacking::unpack(archive, folder, limits, {});
            return std::nullopt;
        } catch (const ArchiveUnpacking::Failure &failure) {
            return failure.reason();
        }
    }

    QTemporaryDir home;
    const QString archive = home.filePath(u"archive"_s);
    const QString folder = home.filePath(u"a/folder"_s);
};

TEST_F(ArchiveUnpackingTest, WhatComesOutIsWhatTheArchiveHoldsWithoutItsRights)
{
    const auto bytes = TestArchive::of({{Kind::folder, "./bin/"},
                                        {Kind::setUserId, "./bin/ollama", "program"},
                                        {Kind::file, "lib/ollama/a.so.1", "library"},
                                        {Kind::link, "lib/ollama/a.so", "a.so.1"},
                                        {Kind::link, "lib/up", "../bin/ollama"},
                                        {Kind::hardLink, "lib/same", "lib/ollama/a.so.1"}});
    ASSERT_EQ(unpack(bytes), std::nullopt);
    EXPECT_EQ(TestArchive::read(folder + u"/bin/ollama"_s), "program");
    EXPECT_EQ(TestArchive::read(folder + u"/lib/ollama/a.so"_s), "library");
    EXPECT_EQ(TestArchive::read(folder + u"/lib/up"_s), "program");
    EXPECT_EQ(TestArchive::read(folder + u"/lib/same"_s), "library");
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(folder + u"/bin/ollama"_s).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    ASSERT_EQ(::stat(QFile::encodeName(folder + u"/lib/ollama/a.so.1"_s).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(ArchiveUnpackingTest, NothingLeavesTheFolder)
{
    const QByteArray outside = QFile::encodeName(home.filePath(u"outside"_s));
    const std::vector<std::vector<TestArchive::Entry>> hostile{
        {{Kind::file, "../outside", "x"}},
        {{Kind::file, "a/../../outside", "x"}},
        {{Kind::file, outside, "x"}},
        {{Kind::link, "a", "../.."}, {Kind::file, "a/outside", "x"}},
        {{Kind::link, "a", "/"}},
        {{Kind::link, "a/b", "../../outside"}},
        {{Kind::link, "a", "../outside"}},
        {{Kind::link, "a", "b/../../outside"}},
        {{Kind::link, "a", "b"}, {Kind::folder, "b"}, {Kind::file, "a/c", "x"}}, // through a link that stays
        {{Kind::hardLink, "a", "../outside"}},
        {{Kind::hardLink, "a", "never"}},
        {{Kind::device, "a"}},
        {{Kind::file, "a", "x"}, {Kind::file, "./a", "y"}},
        {{Kind::file, QByteArray(1'500, 'n'), "x"}},
    };
    TestArchive::write(home.filePath(u"outside"_s), "kept");
    for (std::size_t i = 0; i < hostile.size(); ++i) {
        const auto reason = unpack(TestArchive::of(hostile[i]));
        EXPECT_TRUE(reason == Reason::refused || (i == 8 && reason == Reason::unreadable)) << i;
        EXPECT_EQ(TestArchive::read(home.filePath(u"outside"_s)), "kept") << i;
        EXPECT_EQ(QDir(home.filePath(u"a"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList{u"folder"_s})
            << i;
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
    }
}

TEST_F(ArchiveUnpackingTest, AnArchiveIsNoLargerThanItMayBe)
{
    const auto two = TestArchive::of({{Kind::file, "a", "1234"}, {Kind::file, "b", "5678"}});
    EXPECT_EQ(unpack(two, {.bytes = 8}), std::nullopt);
    EXPECT_EQ(unpack(two, {.bytes = 7}), Reason::refused);
    EXPECT_EQ(unpack(two, {.entries = 1}), Reason::refused);
    const auto three =
        TestArchive::of({{Kind::file, "a", "1234"}, {Kind::file, "b", "5"}, {Kind::file, "c", "1234"}});
    EXPECT_EQ(unpack(three, {.bytes = 8}), Reason::refused);
    const auto sparse = TestArchive::of({{Kind::file, "hole", "end", 1 << 20}});
    EXPECT_LT(sparse.size(), 4'096);
    EXPECT_EQ(unpack(sparse, {.bytes = 1 << 20}), Reason::refused);
}

} // namespace morvane
