#include "persistence/UserDefaultsSettingsRepository.h"
#include "persistence/SettingsValueCoding.h"
#include "support/LogCapture.h"
#include "utils/files/PrivateFile.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace morvane {

using namespace Qt::StringLiterals;

namespace {

class UserDefaultsTest : public testing::Test {
protected:
    [[nodiscard]] bool isPrivate() const
    {
        constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
        return QFile::permissions(path) == ownerOnly;
    }

    QTemporaryDir home;
    QString path =
        UserDefaultsSettingsRepository::path(SupportFolders::inProfile(home.path()), u"domain.name"_s);
};

TEST_F(UserDefaultsTest, EveryValueComesBackWithItsType)
{
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    std::vector<SettingsValue> values{true, false, std::int64_t{5}, least, 0.1, 1.0, -1e300};
    for (const auto &text : {u"5"_s, u"true"_s, u""_s, u"a=b;c, \"d\" \\ @Invalid() %U ü\n\t\u0001 👻"_s})
        values.emplace_back(text);
    for (const auto &bytes : {QByteArray(), QByteArray("\x00\xff\x01", 3)})
        values.emplace_back(bytes);
    for (const auto &list : {QStringList(), QStringList{u""_s, u"a,b"_s, u"\"q\""_s}})
        values.emplace_back(list);
    {
        UserDefaultsSettingsRepository repository(path);
        for (std::size_t i = 0; i < values.size(); ++i)
            repository.setValue(u"key.v%1"_s.arg(i), values[i]);
    }
    EXPECT_TRUE(isPrivate());
    UserDefaultsSettingsRepository repository(path);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(repository.value(u"key.v%1"_s.arg(i)), values[i]) << i;
    EXPECT_EQ(repository.integer(u"key.v7"_s), std::nullopt); // the text "5"
    EXPECT_EQ(repository.string(u"key.v2"_s), std::nullopt);  // the number 5
    EXPECT_EQ(repository.keys().size(), std::ssize(values));

    repository.remove(u"key.v0"_s);
    EXPECT_EQ(repository.boolean(u"key.v0"_s), std::nullopt);
    repository.removeAll();
    EXPECT_TRUE(UserDefaultsSettingsRepository(path).keys().isEmpty());
    EXPECT_TRUE(isPrivate());
}

TEST_F(UserDefaultsTest, AFileWithLooserPermissionsIsTightenedAndAFolderThatCannotBeWrittenLosesNoRead)
{
    PrivateFile::write(path, "[General]\nn=int:1\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    EXPECT_EQ(UserDefaultsSettingsRepository(path).integer(u"n"_s), 1);
    EXPECT_TRUE(isPrivate());
    UserDefaultsSettingsRepository blocked(path + u"/settings.ini"_s); // a file where its folder belongs
    blocked.setBoolean(u"b"_s, true);
    blocked.flush();
    EXPECT_EQ(blocked.boolean(u"b"_s), true);
}

TEST_F(UserDefaultsTest, ABrokenFileIsSetAsideAndNothingOfItIsLost)
{
    LogCapture log;
    for (const auto &number : {u"1"_s, u"2"_s}) {
        const QByteArray broken = "[General\nno line of an ini file\x00\xff" + number.toUtf8();
        PrivateFile::write(path, broken);
        UserDefaultsSettingsRepository(path).setBoolean(u"b"_s, true);
        EXPECT_EQ(UserDefaultsSettingsRepository(path).boolean(u"b"_s), true);
        EXPECT_EQ(PrivateFile::read(path + u".unreadable-"_s + number, 1000), broken);
        EXPECT_EQ(log.lines().constLast(), u"persistence: The settings file could not be read; kept it as "
                                           "domain.name.ini.unreadable-"_s +
                                               number);
    }
}

TEST(SettingsValueCodingTest, WhatIsNoValueReadsAsAbsent)
{
    const QString texts = u" |5|true|int:|int:5.0|int:9223372036854775808|bool:1|bool:TRUE|real:nan|real:inf|"
                          "real:x|data:a|list:{}|list:[1]|list:[\"a\"|Int:5|date:5"_s;
    for (const QString &text : texts.split(u'|'))
        EXPECT_EQ(SettingsValueCoding::decode(text), std::nullopt) << text.toStdString();
}

} // namespace

} // namespace morvane
