#include "security/KeyFile.h"

#include "support/FileSpy.h"
#include "support/TestData.h"
#include "support/WipeSpy.h"
#include "utils/files/PrivateFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray whole = "morvane-keys 1\ncw== YQ== djE=\ncw== Yg== \nend\n";

TEST(KeyFileFormatTest, ReadsWhatItPrintsAndNoBrokenFile)
{
    const std::vector<KeyFileFormat::Entry> entries{{u"s"_s, u"a"_s, "v1"}, {u"s"_s, u"b"_s, ""}};
    EXPECT_EQ(KeyFileFormat::print(entries), whole);
    EXPECT_EQ(KeyFileFormat::parse(whole), entries);
    EXPECT_EQ(KeyFileFormat::parse("morvane-keys 1\nend\n"), std::vector<KeyFileFormat::Entry>());
    for (qsizetype size = 0; size < whole.size(); ++size)
        EXPECT_EQ(KeyFileFormat::parse(whole.first(size)), std::nullopt) << size;
    for (const QByteArray &broken : TestData::lines("security/broken_key_files.txt"))
        EXPECT_EQ(KeyFileFormat::parse(broken), std::nullopt) << broken.constData();
}

class KeyFileTest : public testing::Test {
protected:
    QByteArray contentsOf(const QString &name) const
    {
        QFile raw(name);
        return raw.open(QIODevice::ReadOnly) ? raw.readAll() : QByteArray("(none)");
    }

    QTemporaryDir folder;
    const QString path = folder.filePath(u"new/keys"_s);
    const QByteArray nativePath = QFile::encodeName(path);
    KeyFile file{path};
};

TEST_F(KeyFileTest, KeepsSecretsForItsOwnerOnly)
{
    EXPECT_FALSE(file.exists());
    file.create();
    file.add(u"s"_s, {u"a"_s, "1"});
    file.add(u"other"_s, {u"a"_s, "2"});
    file.create(); // once
    file.add(u"s"_s, {u"a"_s, "3"});
    EXPECT_FALSE(file.update(u"s"_s, u"b"_s, "4"));
    EXPECT_FALSE(file.remove(u"s"_s, u"b"_s));
    ASSERT_EQ(file.items(u"s"_s).size(), 1U);
    EXPECT_EQ(file.find(u"s"_s, u"a"_s)->value, "3");
    EXPECT_EQ(file.find(u"s"_s, u"b"_s), std::nullopt);
    EXPECT_TRUE(file.remove(u"s"_s, u"a"_s));
    EXPECT_THROW(file.add(u"s"_s, {u"c"_s, "1", UserPresence::Required}), SecretStoreError);
    EXPECT_EQ(file.entries(), (std::vector<KeyFileFormat::Entry>{{u"other"_s, u"a"_s, "2"}}));

    ::chmod(nativePath.constData(), 0644); // as a careless copy would leave it
    (void)file.entries();
    struct stat status {};
    ::stat(nativePath.constData(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(KeyFileTest, WipingZeroesTheBytesOnTheDiskThatOtherNamesOfTheFileStillShow)
{
    file.create();
    const QString link = folder.filePath(u"link"_s);
    ASSERT_EQ(::link(nativePath.constData(), QFile::encodeName(link).constData()), 0);
    const qsizetype size = contentsOf(link).size();
    QFile::rename(path, path + u".part-aB3xYz"_s); // of a program that was killed while it wrote
    const QString neighbour = path + u".backup"_s;
    PrivateFile::write(neighbour, "the person's");
    const FileSpy spy(folder.path());
    file.removeStrays();
    EXPECT_EQ(spy.steps(),
              (QStringList{u"unlink new/keys.part-aB3xYz"_s, u"write new/keys.part-aB3xYz (deleted)"_s,
                           u"sync new/keys.part-aB3xYz (deleted)"_s}));
    EXPECT_EQ(contentsOf(link), QByteArray(size, '\0'));
    EXPECT_TRUE(QFile::exists(neighbour));
}

TEST_F(KeyFileTest, LeavesNoCopyOfASecretBehind)
{
    file.create();
    {
        WipeSpy encoded(u"b3BlbiBzZXNhbWU="_s);
        file.add(u"s"_s, {u"a"_s, "open sesame"});
        EXPECT_EQ(encoded.takeCount(), 2); // of its line and of the file
        (void)file.find(u"s"_s, u"a"_s);
        EXPECT_EQ(encoded.takeCount(), 1);
    }
    WipeSpy plain(u"open sesame"_s);
    (void)file.find(u"s"_s, u"a"_s);
    EXPECT_EQ(plain.takeCount(), 1);
}

} // namespace

} // namespace morvane
