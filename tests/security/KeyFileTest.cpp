#include "security/KeyFile.h"

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
    for (const QByteArray &broken : {
             whole + "\n",
             whole + whole,
             QByteArray("morvane-keys 2\nend\n"),
             QByteArray("morvane-keys 1\ncw== YQ==\nend\n"),
             QByteArray("morvane-keys 1\ncw== YQ== dj E=\nend\n"),
             QByteArray("morvane-keys 1\ncw== YQ== djE\nend\n"),
             QByteArray("morvane-keys 1\n/w== YQ== djE=\nend\n"),                 // a name that is no text
             QByteArray("morvane-keys 1\ncw== YQ== djE=\ncw== YQ== djI=\nend\n"), // twice
             QByteArray("morvane-keys 1\r\nend\r\n"),
         })
        EXPECT_EQ(KeyFileFormat::parse(broken), std::nullopt) << broken.constData();
}

class KeyFileTest : public testing::Test {
protected:
    QTemporaryDir folder;
    const QString path = folder.filePath(u"new/keys"_s);
    KeyFile file{path};
};

TEST_F(KeyFileTest, KeepsSecretsForItsOwnerOnly)
{
    EXPECT_FALSE(file.exists());
    file.create();
    EXPECT_TRUE(file.exists());
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
    EXPECT_EQ(file.entries(), (std::vector<KeyFileFormat::Entry>{{u"other"_s, u"a"_s, "2"}}));

    ::chmod(QFile::encodeName(path).constData(), 0644); // as a careless copy would leave it
    (void)file.entries();
    struct stat status {};
    ::stat(QFile::encodeName(path).constData(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(KeyFileTest, NeverWritesOverWhatItCannotRead)
{
    file.create();
    QFile raw(path);
    ASSERT_TRUE(raw.open(QIODevice::WriteOnly));
    raw.write("something else");
    raw.close();
    EXPECT_THROW(file.add(u"s"_s, {u"a"_s, "1"}), SecretStoreError);
    EXPECT_THROW((void)file.find(u"s"_s, u"a"_s), SecretStoreError);
    EXPECT_THROW((void)file.remove(u"s"_s, u"a"_s), SecretStoreError);
    ASSERT_TRUE(raw.open(QIODevice::ReadOnly));
    EXPECT_EQ(raw.readAll(), "something else");
}

TEST_F(KeyFileTest, CannotHoldAnItemBehindPresence)
{
    file.create();
    EXPECT_FALSE(file.keepsPresence());
    EXPECT_THROW(file.add(u"s"_s, {u"a"_s, "1", UserPresence::Required}), SecretStoreError);
    EXPECT_EQ(file.find(u"s"_s, u"a"_s), std::nullopt);
}

TEST_F(KeyFileTest, WipingZeroesTheBytesThatOtherNamesOfTheFileStillShow)
{
    file.create();
    file.add(u"s"_s, {u"a"_s, "1"});
    const QString link = folder.filePath(u"link"_s);
    ASSERT_EQ(::link(QFile::encodeName(path).constData(), QFile::encodeName(link).constData()), 0);
    file.wipeOut();
    EXPECT_FALSE(file.exists());
    QFile left(link);
    ASSERT_TRUE(left.open(QIODevice::ReadOnly));
    const QByteArray bytes = left.readAll();
    EXPECT_EQ(bytes, QByteArray(bytes.size(), '\0'));
    EXPECT_GT(bytes.size(), 0);
}

} // namespace

} // namespace morvane
