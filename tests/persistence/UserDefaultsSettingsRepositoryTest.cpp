#include "persistence/UserDefaultsSettingsRepository.h"
#include "persistence/SettingsValueCoding.h"
#include "support/LogCapture.h"
#include "utils/files/PrivateFile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QFile::Permissions permissionsOf(const QString &path)
{
    constexpr auto all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                         QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther |
                         QFile::ExeOther;
    return QFile::permissions(path) & all;
}

class UserDefaultsTest : public testing::Test {
protected:
    QTemporaryDir home;
    QString path =
        UserDefaultsSettingsRepository::path(SupportFolders::inProfile(home.path()), u"domain.name"_s);
};

const std::vector<SettingsValue> oddValues{
    true,
    false,
    std::int64_t{5},
    std::numeric_limits<std::int64_t>::min(),
    0.1,
    1.0,
    -1e300,
    u""_s,
    u"5"_s,
    u"true"_s,
    u"a=b;c, \"d\" \\ @Invalid() %U ü\n\t\u0001 👻"_s,
    QByteArray(),
    QByteArray("\x00\xff\x01", 3),
    QStringList(),
    QStringList{u""_s, u"a,b"_s, u"\"q\""_s},
};

TEST_F(UserDefaultsTest, EveryValueComesBackWithItsType)
{
    {
        UserDefaultsSettingsRepository repository(path);
        for (std::size_t i = 0; i < oddValues.size(); ++i)
            repository.setValue(u"key.v%1"_s.arg(i), oddValues[i]);
    }
    EXPECT_EQ(permissionsOf(path), ownerOnly);
    UserDefaultsSettingsRepository repository(path);
    for (std::size_t i = 0; i < oddValues.size(); ++i)
        EXPECT_EQ(repository.value(u"key.v%1"_s.arg(i)), oddValues[i]) << i;
    EXPECT_EQ(repository.integer(u"key.v8"_s), std::nullopt); // the text "5"
    EXPECT_EQ(repository.string(u"key.v2"_s), std::nullopt);  // the number 5
    EXPECT_EQ(repository.keys().size(), static_cast<qsizetype>(oddValues.size()));

    repository.remove(u"key.v0"_s);
    EXPECT_EQ(repository.boolean(u"key.v0"_s), std::nullopt);
    repository.removeAll();
    EXPECT_TRUE(UserDefaultsSettingsRepository(path).keys().isEmpty());
    EXPECT_EQ(permissionsOf(path), ownerOnly);
}

TEST_F(UserDefaultsTest, AFileWithLooserPermissionsIsTightened)
{
    PrivateFile::write(path, "[General]\nn=int:1\n");
    QFile::setPermissions(path, ownerOnly | QFile::ReadGroup | QFile::ReadOther);
    UserDefaultsSettingsRepository repository(path);
    EXPECT_EQ(repository.integer(u"n"_s), 1);
    EXPECT_EQ(permissionsOf(path), ownerOnly);
}

TEST_F(UserDefaultsTest, ABrokenFileIsSetAsideAndNothingOfItIsLost)
{
    const QByteArray broken = "[General\nno line of an ini file\x00\xff";
    PrivateFile::write(path, broken);
    LogCapture log;
    {
        UserDefaultsSettingsRepository repository(path);
        EXPECT_TRUE(repository.keys().isEmpty());
        repository.setBoolean(u"b"_s, true);
    }
    EXPECT_TRUE(UserDefaultsSettingsRepository(path).boolean(u"b"_s).value_or(false));
    EXPECT_EQ(PrivateFile::read(path + u".unreadable-1"_s, 1000), broken);
    EXPECT_EQ(log.lines(), QStringList{u"persistence: The settings file could not be read; kept it as "
                                       "domain.name.ini.unreadable-1"_s});
}

TEST_F(UserDefaultsTest, AFolderThatCannotBeWrittenLosesNoRead)
{
    PrivateFile::write(home.filePath(u"blocked"_s), "a file, not a folder");
    UserDefaultsSettingsRepository repository(home.filePath(u"blocked/settings.ini"_s));
    repository.setBoolean(u"b"_s, true);
    repository.flush();
    EXPECT_EQ(repository.boolean(u"b"_s), true);
}

TEST(SettingsValueCodingTest, WhatIsNoValueReadsAsAbsent)
{
    for (const auto &text :
         {u""_s, u"5"_s, u"true"_s, u"int:"_s, u"int:5.0"_s, u"int:9223372036854775808"_s, u"bool:1"_s,
          u"bool:TRUE"_s, u"real:nan"_s, u"real:inf"_s, u"real:x"_s, u"data:a"_s, u"list:{}"_s, u"list:[1]"_s,
          u"list:[\"a\""_s, u"Int:5"_s, u"date:5"_s})
        EXPECT_EQ(SettingsValueCoding::decode(text), std::nullopt) << text.toStdString();
}

} // namespace

} // namespace morvane
