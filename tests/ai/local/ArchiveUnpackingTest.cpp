#include "ai/local/ArchiveUnpacking.h"

#include "TestFiles.h"
#include "runtime_host/ArchiveWriter.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;
using Reason = ArchiveUnpacking::Failure::Reason;

using Fill = std::function<void(ArchiveWriter &archive)>;

class ArchiveUnpackingTest : public testing::Test {
protected:
    ArchiveUnpackingTest() { QDir().mkpath(folder); }

    std::optional<Reason> unpack(const Fill &fill, const ArchiveUnpacking::Limits &limits = {})
    {
        ArchiveWriter writer;
        fill(writer);
        TestFiles::write(archive, writer.finish());
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
    const auto reason = unpack([](ArchiveWriter &archive) {
        archive.addFolder("./bin/");
        archive.addFile("./bin/ollama", "program", 06755);
        archive.addFile("lib/ollama/a.so.1", "library", 0666);
        archive.addSymbolicLink("lib/ollama/a.so", "a.so.1");
        archive.addSymbolicLink("lib/up", "../bin/ollama");
        archive.addHardLink("lib/same", "lib/ollama/a.so.1");
    });
    ASSERT_EQ(reason, std::nullopt);
    EXPECT_EQ(TestFiles::read(folder + u"/bin/ollama"_s), "program");
    EXPECT_EQ(TestFiles::read(folder + u"/lib/ollama/a.so"_s), "library");
    EXPECT_EQ(TestFiles::read(folder + u"/lib/up"_s), "program");
    EXPECT_EQ(TestFiles::read(folder + u"/lib/same"_s), "library");
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(folder + u"/bin/ollama"_s).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    ASSERT_EQ(::stat(QFile::encodeName(folder + u"/lib/ollama/a.so.1"_s).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(ArchiveUnpackingTest, NothingLeavesTheFolder)
{
    const QByteArray outside = QFile::encodeName(home.filePath(u"outside"_s));
    const std::vector<Fill> hostile{
        [](ArchiveWriter &a) { a.addFile("../outside", "x"); },
        [](ArchiveWriter &a) { a.addFile("a/../../outside", "x"); },
        [&](ArchiveWriter &a) { a.addFile(outside, "x"); },
        [](ArchiveWriter &a) { a.addSymbolicLink("a", "/"); },
        [](ArchiveWriter &a) { a.addSymbolicLink("a/b", "../../outside"); },
        [](ArchiveWriter &a) { a.addSymbolicLink("a", "../outside"); },
        [](ArchiveWriter &a) { a.addSymbolicLink("a", "b/../../outside"); },
        [](ArchiveWriter &a) { a.addHardLink("a", "../outside"); },
        [](ArchiveWriter &a) { a.addHardLink("a", "never"); },
        [](ArchiveWriter &a) { a.addDevice("a", 1, 3); },
        [](ArchiveWriter &a) { a.addFile(QByteArray(1'500, 'n'), "x"); },
        [](ArchiveWriter &a) {
            a.addSymbolicLink("a", "../..");
            a.addFile("a/outside", "x");
        },
        [](ArchiveWriter &a) {
            a.addFile("a", "x");
            a.addFile("./a", "y");
        },
        [](ArchiveWriter &a) { // through a link that stays
            a.addSymbolicLink("a", "b");
            a.addFolder("b");
            a.addFile("a/c", "x");
        },
    };
    TestFiles::write(home.filePath(u"outside"_s), "kept");
    for (std::size_t i = 0; i < hostile.size(); ++i) {
        const auto reason = unpack(hostile[i]);
        const bool isLast = i + 1 == hostile.size();
        EXPECT_TRUE(reason == Reason::refused || (isLast && reason == Reason::unreadable)) << i;
        EXPECT_EQ(TestFiles::read(home.filePath(u"outside"_s)), "kept") << i;
        EXPECT_EQ(QDir(home.filePath(u"a"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList{u"folder"_s})
            << i;
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
    }
}

TEST_F(ArchiveUnpackingTest, AnArchiveIsNoLargerThanItMayBe)
{
    const auto files = [](QByteArrayList contents) {
        return [contents](ArchiveWriter &archive) {
            for (qsizetype i = 0; i < contents.size(); ++i)
                archive.addFile(QByteArray::number(i), contents[i]);
        };
    };
    EXPECT_EQ(unpack(files({"1234", "5678"}), {.bytes = 8}), std::nullopt);
    EXPECT_EQ(unpack(files({"1234", "5678"}), {.bytes = 7}), Reason::refused);
    EXPECT_EQ(unpack(files({"1234", "5678"}), {.entries = 1}), Reason::refused);
    EXPECT_EQ(unpack(files({"1234", "5", "1234"}), {.bytes = 8}), Reason::refused);
    const Fill hole = [](ArchiveWriter &archive) { archive.addHole("hole", (1 << 20) + 1); };
    EXPECT_EQ(unpack(hole, {.bytes = 1 << 20}), Reason::refused);
    EXPECT_LT(QFile(archive).size(), 4'096);
}

} // namespace morvane
